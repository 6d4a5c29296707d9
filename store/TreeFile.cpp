#include "store/TreeFile.h"

#include "app/base/Win32.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "app/base/File.h"
#include "ui/win/Handles.h"

// The file: four bytes that name the format, four of its version, the number of categories, then for each its
// depth (0 for a top-level one) and the lengths of its key and its text, each 32 bits, and both in UTF-16; at
// the end a checksum of 64 bits over all that. Numbers stand with their lowest byte first.

namespace kestrelon::store {
namespace {

constexpr char kMagic[4] = {'K', 'T', 'r', 'e'};
constexpr std::uint32_t kVersion = 1;

using UniqueFile = win::Unique<HANDLE, ::CloseHandle>;

// FNV-1a over 64-bit words, the last one filled up with zeros: the file may have megabytes.
std::uint64_t Checksum(const char* bytes, std::size_t size) {
  std::uint64_t sum = 14695981039346656037u;
  for (std::size_t at = 0; at < size; at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes + at, std::min(sizeof word, size - at));
    sum = (sum ^ word) * 1099511628211u;
    sum ^= sum >> 32;
  }
  return sum;
}

template <class Number>
void Put(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void PutText(std::string& bytes, const std::wstring& text) {
  bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

class Reader {
 public:
  Reader(const char* bytes, std::size_t size) : at_(bytes), end_(bytes + size) {}
  std::uint32_t Number() {
    std::uint32_t number;
    std::memcpy(&number, Take(sizeof number), sizeof number);
    return number;
  }
  std::wstring Text(std::uint32_t units) {
    std::wstring text(units <= Left() / sizeof(wchar_t) ? units : ThrowDamaged(), L'\0');
    std::memcpy(text.data(), Take(units * sizeof(wchar_t)), units * sizeof(wchar_t));
    return text;
  }
  std::size_t Left() const { return static_cast<std::size_t>(end_ - at_); }
  [[noreturn]] static std::uint32_t ThrowDamaged() {
    throw std::runtime_error("The file of the categories is damaged.");
  }

 private:
  const char* Take(std::size_t size) {
    if (size > Left()) ThrowDamaged();
    at_ += size;
    return at_ - size;
  }
  const char* at_;
  const char* end_;
};

std::string ReadAll(const std::wstring& path) {
  HANDLE handle = INVALID_HANDLE_VALUE;
  const bool opened = Persistently([&] {
    handle = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                           nullptr, OPEN_EXISTING, 0, nullptr);
    return handle != INVALID_HANDLE_VALUE;
  });
  if (!opened) ThrowLastError(L"Cannot read " + path);
  const UniqueFile file(handle);
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(file.get(), &size)) ThrowLastError(L"Cannot read " + path);
  if (size.QuadPart > 0x40000000) Reader::ThrowDamaged();
  std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
  DWORD read = 0;
  if (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
    ThrowLastError(L"Cannot read " + path);
  bytes.resize(read);
  return bytes;
}

}  // namespace

void WriteTreeFile(const std::wstring& path, const win::TreeView& tree) {
  constexpr std::size_t kLikelyBytes = 100;  // of a category
  std::string bytes;
  bytes.reserve(tree.Count() * kLikelyBytes + 64);
  bytes.append(kMagic, sizeof kMagic);
  Put(bytes, kVersion);
  Put(bytes, static_cast<std::uint32_t>(tree.Count()));
  std::uint32_t depth = 0;
  const win::TreeNode* last = nullptr;
  ForEachNode(tree, [&](const win::TreeNode& node) {
    if (last != nullptr && node.Parent() == last) {
      ++depth;
    } else {
      for (; last != nullptr && last->Parent() != node.Parent(); last = last->Parent()) --depth;
    }
    last = &node;
    Put(bytes, depth);
    Put(bytes, static_cast<std::uint32_t>(node.Key().size()));
    Put(bytes, static_cast<std::uint32_t>(node.Text().size()));
    PutText(bytes, node.Key());
    PutText(bytes, node.Text());
  });
  Put(bytes, Checksum(bytes.data(), bytes.size()));

  // At once or not at all: nobody holds a file that is not there yet, and this is done while the user works.
  const HANDLE handle =
      ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) ThrowLastError(L"Cannot write " + path);
  const UniqueFile file(handle);
  DWORD written = 0;
  if (!::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
      written != bytes.size() || !::FlushFileBuffers(file.get())) {
    ThrowLastError(L"Cannot write " + path);
  }
}

std::vector<CategoryRow> ReadTreeFile(const std::wstring& path) {
  const std::string bytes = ReadAll(path);
  std::uint64_t sum = 0;
  if (bytes.size() < sizeof kMagic + sizeof sum) Reader::ThrowDamaged();
  const std::size_t size = bytes.size() - sizeof sum;
  std::memcpy(&sum, bytes.data() + size, sizeof sum);
  if (std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0 || Checksum(bytes.data(), size) != sum)
    Reader::ThrowDamaged();
  Reader reader(bytes.data() + sizeof kMagic, size - sizeof kMagic);
  if (reader.Number() != kVersion) Reader::ThrowDamaged();
  const std::uint32_t count = reader.Number();
  std::vector<CategoryRow> rows;
  std::vector<std::wstring> keys;  // of the present category and those above it
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t depth = reader.Number(), keyLength = reader.Number(), textLength = reader.Number();
    if (depth > keys.size()) Reader::ThrowDamaged();
    keys.resize(depth);
    std::wstring key = reader.Text(keyLength), text = reader.Text(textLength);
    rows.push_back({depth == 0 ? kNoParent : keys.back(), key, std::move(text)});
    keys.push_back(std::move(key));
  }
  return rows;
}

}  // namespace kestrelon::store
