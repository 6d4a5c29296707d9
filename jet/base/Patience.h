#pragma once

#include <chrono>
#include <functional>

#include "jet/base/File.h"

namespace kestrelon::jet {

// How an attempt to open or remove a file ended.
enum class Outcome {
  kDone,
  kMissing,
  kHeld,      // another program has the file open in a way that excludes ours
  kDenied,    // not allowed, for a reason that may pass: on Windows a file that is about to go is denied, too
  kReadOnly,  // may not be written, and that will not change by waiting
  kFailed,    // for any other reason
};

// Virus scanners, indexers and backup programs open a file shortly after it was written, and let go of it
// after some tenths of a second. An attempt that ends with kHeld or kDenied is repeated after growing waits,
// one second in all; returns how the last one ended.
Outcome WithPatience(const std::function<Outcome()>& attempt);

// The same for opening in `mode`. A file that may not be written is opened for reading instead where
// kReadWrite was asked for: at once for kReadOnly, after the last wait for kDenied. `mode` becomes the one it
// was opened in.
Outcome OpenPatiently(OpenMode& mode, const std::function<Outcome(OpenMode)>& attempt);

// What waits between two attempts; it sleeps. Tests put something else in its place, and back what they got.
using Wait = std::function<void(std::chrono::milliseconds)>;
Wait ExchangeWait(Wait wait);

}  // namespace kestrelon::jet
