#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>

#include "jet/base/File.h"
#include "jet/base/Patience.h"

// The system's calls for files, by the C runtime's descriptors. What they return where they fail is negative
// or false, and errno says why.
namespace kestrelon::jet::descriptor {

// One attempt; `error` is errno's value where it fails.
Outcome Open(const std::filesystem::path& path, OpenMode mode, int& descriptor, int& error);
Outcome Remove(const std::filesystem::path& path);
void Close(int descriptor);
std::int64_t Size(int descriptor);
std::int64_t ReadSome(int descriptor, std::uint64_t offset, std::uint8_t* bytes, std::size_t size);
std::int64_t WriteSome(int descriptor, std::uint64_t offset, const std::uint8_t* bytes, std::size_t size);
bool Synchronize(int descriptor);
bool SetSize(int descriptor, std::uint64_t size);

// Of an open file; of the file at a path, however others have it open.
bool ReadStamp(int descriptor, FileStamp& stamp);
bool ReadStamp(const std::filesystem::path& path, FileStamp& stamp);
// Gives the file a write time that it has not had before and that no write of another program gives it.
bool RenewWriteTime(int descriptor);

void Sleep(std::chrono::milliseconds time);

}  // namespace kestrelon::jet::descriptor
