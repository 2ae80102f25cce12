#pragma once

#include <cstddef>

/// The allocator of a test program: refuses what it is told to refuse, and counts. Every malloc() is replaced, those of
/// zlib, OpenSSL and stdio too. What is freed is overwritten, so that whoever still reads it notices.
namespace Allocations {

/// Whether that is so. AddressSanitizer has an allocator of its own: nothing is refused or counted then.
bool isReplaced();

/// Refuses the allocation that follows `before` others.
/// @param forGood  also all that follow it
void refuseAfter(long before, bool forGood);
/// Refuses no more. @return how many were refused since
long stopRefusing();

/// Bytes that are allocated now.
std::size_t live();
/// Forgets the peak and the count.
void startMeasuring();
/// Allocations since startMeasuring(), refused ones too.
long countSinceStart();
/// The most bytes that were allocated at once, above those at startMeasuring().
std::size_t peak();

}  // namespace Allocations
