#pragma once

#include <cstddef>

/// The allocator of a test program: refuses what it is told to refuse, and counts. Without AddressSanitizer, which has
/// an allocator of its own, every malloc() is replaced, those of zlib, OpenSSL and stdio too; with it every operator
/// new.
namespace Allocations {

/// Refuses the allocation that follows `before` others.
/// @param forGood  also all that follow it
void refuseAfter(long before, bool forGood);
/// Refuses no more. @return how many were refused since
long stopRefusing();

/// Whether the allocator is a sanitizer's.
bool isSanitized();
/// Bytes that are allocated now.
std::size_t live();
/// Forgets the peak and the count.
void startMeasuring();
/// Allocations since startMeasuring(), refused ones too.
long countSinceStart();
/// The most bytes that were allocated at once, above those at startMeasuring().
std::size_t peak();

}  // namespace Allocations
