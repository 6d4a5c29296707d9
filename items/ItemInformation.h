#pragma once

#include <string>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"

namespace kestrelon::items {

// What the item information tip says of a file: place, size, attributes and times, in lines parted by CR LF;
// or message 11 when the file is not there or its server does not answer. Shows no box.
std::wstring ItemInformation(const Program& program, const OutsideWorld& world, const std::wstring& path);

// The path as the tip shows it: more than 40 characters are cut to the first 50 and followed by "...". The
// two figures differ, so that a path of 41 to 50 characters is whole and still has the dots.
std::wstring ShortenedPath(const std::wstring& path);

// A network path whose server does not answer counts as missing; every other path may be looked at.
bool ServerAnswers(const OutsideWorld& world, const std::wstring& path);

}  // namespace kestrelon::items
