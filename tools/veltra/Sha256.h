#pragma once

#include <string>

#include <libinspect/container/ByteSource.h>

namespace Command {

/// The SHA-256 of an input as 64 hexadecimal digits; empty if it cannot be read to its end. From any thread.
std::string sha256Of(const Inspect::ByteSource& source);

}  // namespace Command
