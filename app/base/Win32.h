#pragma once

// The one place that includes <windows.h>. The build defines UNICODE, NOMINMAX, STRICT and
// WIN32_LEAN_AND_MEAN.
#include <windows.h>
