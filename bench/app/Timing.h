#pragma once

#include "app/base/Win32.h"

#include <functional>

namespace kestrelon {

// How long one run of `work` takes.
inline double Milliseconds(const std::function<void()>& work) {
  LARGE_INTEGER frequency, start, end;
  ::QueryPerformanceFrequency(&frequency);
  ::QueryPerformanceCounter(&start);
  work();
  ::QueryPerformanceCounter(&end);
  return 1000.0 * static_cast<double>(end.QuadPart - start.QuadPart) /
         static_cast<double>(frequency.QuadPart);
}

}  // namespace kestrelon
