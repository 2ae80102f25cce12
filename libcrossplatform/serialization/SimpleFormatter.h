#pragma once

// Threads: one at a time may use an object; different objects do not disturb each other.

#include <iosfwd>

#include <libcrossplatform/serialization/IFormatter.h>

namespace Dump {

/// Writes dumps as indented text: two spaces per level, `name: value`, `Name {` ... `}`; whole texts unchanged.
class VELTRA_EXPORT SimpleFormatter : public IFormatter {
 public:
  /// @param out  borrowed; must outlive the formatter
  explicit SimpleFormatter(std::ostream& out);

  void text(const char* text, int level) override;
  void field(const char* name, bool value) override;
  void field(const char* name, uint16_t value) override;
  void field(const char* name, uint32_t value) override;
  void field(const char* name, float value) override;
  void field(const char* name, const char* text) override;
  using IFormatter::field;
  void beginObject(const char* name) override;
  void endObject() override;

 private:
  std::ostream& indent();

  std::ostream& _out;
  int _depth = 0;
};

}  // namespace Dump
