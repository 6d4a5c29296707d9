#include "tests/jet/SimulatedDisk.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

namespace kestrelon::jet {
namespace {

constexpr std::size_t kSector = 512;

void Put(SimulatedDisk::Bytes& file, std::size_t offset, std::span<const std::uint8_t> bytes) {
  if (file.size() < offset + bytes.size()) file.resize(offset + bytes.size());
  std::copy(bytes.begin(), bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

class SimulatedDisk::RecordingFile final : public File {
 public:
  RecordingFile(SimulatedDisk& disk, std::size_t file)
      : disk_(&disk), file_(file), inner_(OpenMemoryFile(disk.current_[file])) {}
  std::uint64_t Size() const override { return inner_->Size(); }
  void ReadAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const override {
    inner_->ReadAt(offset, bytes);
  }
  void WriteAt(std::uint64_t offset, std::span<const std::uint8_t> bytes) override {
    disk_->steps_.push_back({file_, Kind::kWrite, offset, {bytes.begin(), bytes.end()}});
    inner_->WriteAt(offset, bytes);
  }
  void Resize(std::uint64_t size) override {
    disk_->steps_.push_back({file_, Kind::kResize, size, {}});
    inner_->Resize(size);
  }
  void Flush() override { disk_->steps_.push_back({file_, Kind::kFlush, 0, {}}); }

 private:
  SimulatedDisk* disk_;
  std::size_t file_;
  std::unique_ptr<File> inner_;
};

SimulatedDisk::SimulatedDisk(Image files) : base_(std::move(files)) {
  for (const Bytes& bytes : base_) current_.push_back(std::make_shared<Bytes>(bytes));
  Replay(0);
}

std::unique_ptr<File> SimulatedDisk::Open(std::size_t file) {
  return std::make_unique<RecordingFile>(*this, file);
}

std::size_t SimulatedDisk::Flushes() const {
  return static_cast<std::size_t>(std::count_if(steps_.begin(), steps_.end(),
                                                [](const Step& step) { return step.kind == Kind::kFlush; }));
}

SimulatedDisk::Image SimulatedDisk::Current() const {
  Image image;
  for (const ByteVector& bytes : current_) image.push_back(*bytes);
  return image;
}

void SimulatedDisk::Do(Bytes& file, const Step& step) {
  if (step.kind == Kind::kWrite) Put(file, static_cast<std::size_t>(step.offset), step.bytes);
  if (step.kind == Kind::kResize) file.resize(static_cast<std::size_t>(step.offset));
}

void SimulatedDisk::Replay(std::size_t at) {
  if (at < played_ || at == 0) {
    written_ = onDisk_ = base_;
    unflushed_.assign(base_.size(), {});
    played_ = 0;
  }
  for (; played_ < at; ++played_) {
    const Step& step = steps_[played_];
    if (step.kind == Kind::kFlush) {
      onDisk_[step.file] = written_[step.file];
      unflushed_[step.file].clear();
    } else {
      Do(written_[step.file], step);
      unflushed_[step.file].push_back(played_);
    }
  }
}

std::vector<SimulatedDisk::Image> SimulatedDisk::Stops(std::size_t at, int subsets, std::mt19937& random) {
  Replay(at);
  std::vector<Image> images = {written_};
  if (at < steps_.size()) {
    const Step& step = steps_[at];
    for (const std::size_t torn : {1, 20, 512, 4000, 5000}) {
      if (torn >= step.bytes.size()) break;
      Put(images.emplace_back(written_)[step.file], static_cast<std::size_t>(step.offset),
          std::span(step.bytes).first(torn));
    }
  }
  for (int subset = 0; subset < subsets; ++subset) {
    const unsigned kept = std::array{25u, 90u, 50u, 98u}[static_cast<std::size_t>(subset % 4)];  // percent
    const auto keeps = [&] { return random() % 100 < kept; };
    const bool whole = subset % 4 == 2;  // calls rather than sectors
    Image& image = images.emplace_back(onDisk_);
    for (std::size_t file = 0; file < image.size(); ++file) {
      for (const std::size_t number : unflushed_[file]) {
        const Step& step = steps_[number];
        if (whole || step.kind == Kind::kResize) {
          if (keeps()) Do(image[file], step);
          continue;
        }
        for (std::size_t done = 0; done < step.bytes.size();) {
          const std::size_t offset = static_cast<std::size_t>(step.offset) + done;
          const std::size_t piece = std::min(kSector - offset % kSector, step.bytes.size() - done);
          if (keeps()) Put(image[file], offset, std::span(step.bytes).subspan(done, piece));
          done += piece;
        }
      }
    }
  }
  return images;
}

}  // namespace kestrelon::jet
