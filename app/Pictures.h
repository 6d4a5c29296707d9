#pragma once

#include <initializer_list>

#include "ui/win/Handles.h"

namespace kestrelon::app {

// An image list of the program's icon resources (identifiers of packaging/resource.h), in their order,
// square, of this many pixels. Each icon resource holds several sizes; the one that fits is taken. A picture
// that is missing leaves an empty place, so that the positions stay.
win::UniqueImageList LoadPictures(std::initializer_list<int> iconIds, int pixels);

}  // namespace kestrelon::app
