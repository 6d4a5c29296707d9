#include "fuzz/MemoryMeter.h"

#include <malloc.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace kestrelon::fuzz {
namespace {

std::atomic<std::int64_t> live{0}, peak{0};
std::atomic<std::int64_t> limit{INT64_MAX};
std::atomic<std::int64_t> atStart{0};

[[noreturn]] void Breach(std::int64_t bytes) {
  const std::int64_t allowed = limit.exchange(INT64_MAX);
  std::fprintf(stderr, "memory: %lld bytes are in use, %lld are allowed\n", static_cast<long long>(bytes),
               static_cast<long long>(allowed));
  std::abort();
}

void* Allocate(std::size_t size) {
  const std::int64_t now = live + static_cast<std::int64_t>(size) - atStart;
  if (now > limit) Breach(now);
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) return nullptr;
  live += static_cast<std::int64_t>(malloc_usable_size(memory));
  if (now > peak) peak = now;
  return memory;
}

void* AllocateOrThrow(std::size_t size) {
  void* memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void Free(void* memory) {
  if (memory == nullptr) return;
  live -= static_cast<std::int64_t>(malloc_usable_size(memory));
  std::free(memory);
}

}  // namespace

MemoryMeter::MemoryMeter(std::size_t most) {
  atStart = live.load();
  peak = 0;
  limit = static_cast<std::int64_t>(most);
}

MemoryMeter::~MemoryMeter() { limit = INT64_MAX; }

std::size_t MemoryMeter::Peak() { return static_cast<std::size_t>(peak.load()); }

}  // namespace kestrelon::fuzz

void* operator new(std::size_t size) { return kestrelon::fuzz::AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return kestrelon::fuzz::AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return kestrelon::fuzz::Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return kestrelon::fuzz::Allocate(size);
}
void operator delete(void* memory) noexcept { kestrelon::fuzz::Free(memory); }
void operator delete[](void* memory) noexcept { kestrelon::fuzz::Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { kestrelon::fuzz::Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { kestrelon::fuzz::Free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { kestrelon::fuzz::Free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { kestrelon::fuzz::Free(memory); }
