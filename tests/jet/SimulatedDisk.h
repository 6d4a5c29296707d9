#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "jet/base/File.h"
#include "tests/jet/Support.h"

namespace kestrelon::jet {

// Some files, and every call that changed them or flushed one of them, in order. From these it puts together
// what a stop leaves. It must outlive the files that it opened.
class SimulatedDisk {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using Image = std::vector<Bytes>;  // one for each file

  explicit SimulatedDisk(Image files);

  std::unique_ptr<File> Open(std::size_t file);
  // Calls until now.
  std::size_t Steps() const { return steps_.size(); }
  std::size_t Flushes() const;
  // The files as they are now, for the process that goes on.
  Image Current() const;

  // Images that a stop before the call `at` can leave: what was written until then; that and the beginning of
  // the call; and, `subsets` times, any sectors or calls of what was not flushed, in whatever order they were
  // made. Ascending calls are found fast.
  std::vector<Image> Stops(std::size_t at, int subsets, std::mt19937& random);

 private:
  enum class Kind { kWrite, kResize, kFlush };
  struct Step {
    std::size_t file;
    Kind kind;
    std::uint64_t offset = 0;  // the new size, of kResize
    Bytes bytes;
  };
  class RecordingFile;

  static void Do(Bytes& file, const Step& step);
  void Replay(std::size_t at);

  std::vector<ByteVector> current_;
  std::vector<Step> steps_;
  // How far the calls were played again, what they wrote, what of it is on the disk for certain, and which
  // calls are not.
  Image base_, written_, onDisk_;
  std::vector<std::vector<std::size_t>> unflushed_;
  std::size_t played_ = 0;
};

}  // namespace kestrelon::jet
