// Replaces the global allocation functions. Each block carries its size in front of it, which
// keeps the count exact whatever the allocator below rounds to.
#include "endurance/live_bytes.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t live = 0;

// Room for the size that keeps what follows aligned as `new` promises, which on some systems is
// more than any type of the language needs.
constexpr std::size_t prefix = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
static_assert(prefix >= sizeof(std::size_t));

// Null when there is no memory.
void* counted(std::size_t size) noexcept {
  void* block = std::malloc(prefix + size);
  if (block == nullptr) return nullptr;
  *static_cast<std::size_t*>(block) = size;
  live += size;
  return static_cast<char*>(block) + prefix;
}

void* countedOrThrow(std::size_t size) {
  void* block = counted(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void release(void* pointer) noexcept {
  if (pointer == nullptr) return;
  void* block = static_cast<char*>(pointer) - prefix;
  live -= *static_cast<std::size_t*>(block);
  std::free(block);
}

}  // namespace

std::size_t callmonitor::endurance::liveBytes() {
  return live;
}

void* operator new(std::size_t size) {
  return countedOrThrow(size);
}
void* operator new[](std::size_t size) {
  return countedOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return counted(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return counted(size);
}
void operator delete(void* pointer) noexcept {
  release(pointer);
}
void operator delete[](void* pointer) noexcept {
  release(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
  release(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
  release(pointer);
}
