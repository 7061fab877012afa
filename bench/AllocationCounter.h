// Counts the program's heap allocations: a replacement of the global operator new over malloc. Include
// it in exactly one source file of a program; not beside AddressSanitizer, which replaces it itself.
#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

inline std::atomic<long> gAllocations{0};

void* operator new(std::size_t size) {
  ++gAllocations;
  if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
