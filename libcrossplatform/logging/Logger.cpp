#include <libcrossplatform/logging/Logger.h>

#include <cstdio>

namespace Veltra {
namespace {

void printToStandardError(Logger::Facility facility, Logger::Severity severity, const char* format, va_list args) {
  std::fprintf(stderr, "[%d:%d] ", static_cast<int>(facility), static_cast<int>(severity));
  std::vfprintf(stderr, format, args);
  std::fputc('\n', stderr);
}

Logger::Sink currentSink = printToStandardError;

}  // namespace

void Logger::log(Facility facility, Severity severity, const char* format, ...) {
  va_list args;
  va_start(args, format);
  currentSink(facility, severity, format, args);
  va_end(args);
}

Logger::Sink Logger::setSink(Sink sink) {
  const Sink previous = currentSink;
  currentSink = sink != nullptr ? sink : printToStandardError;
  return previous;
}

}  // namespace Veltra
