// The one function that is used of libdeflate: zlib's has the same values.
#pragma once
#include <zlib.h>

#define libdeflate_crc32(crc, data, size) static_cast<uint32_t>(crc32_z(crc, data, size))
