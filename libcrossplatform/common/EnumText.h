#pragma once

// Threads: any number may call these functions at once.

#include <cstddef>
#include <string_view>

#include <gsl/span>

namespace Veltra {

/// In which directions a row of a text table holds.
enum TextUse {
  TEXT_BOTH_WAYS,   ///< printed and parsed
  TEXT_SHOWN_ONLY,  ///< printed, but never parsed
};

/// One row of a text table: written once, used for printing and for parsing.
template <class E>
struct EnumText {
  E value;                       ///< unique in its table
  const char* text;              ///< unique, too; a literal
  TextUse use = TEXT_BOTH_WAYS;  ///< whether the text is parsed
};

/// The table of an enumeration, in the order of its values: what its toString() and its parser read. Each header that
/// declares an enumeration with such a table declares its specialisation.
template <class E>
gsl::span<const EnumText<E>> enumTexts();

/// Text of a value; `fallback` outside the table.
template <class E, std::size_t N>
const char* textOf(const EnumText<E> (&table)[N], E value, const char* fallback = "") {
  for (const EnumText<E>& row : table) {
    if (row.value == value) return row.text;
  }
  return fallback;
}

/// Value of the first parsed row whose text is exactly equal.
/// @return false, with `out` unchanged, when there is none
template <class E, std::size_t N>
bool valueOf(const EnumText<E> (&table)[N], std::string_view text, E& out) {
  for (const EnumText<E>& row : table) {
    if (row.use == TEXT_SHOWN_ONLY || text != row.text) continue;
    out = row.value;
    return true;
  }
  return false;
}

/// Value of the row that prints as `text`, a text that is only shown included.
/// @return false, with `out` unchanged, when there is none
template <class E>
bool valueShownAs(std::string_view text, E& out) {
  for (const EnumText<E>& row : enumTexts<E>()) {
    if (text != row.text) continue;
    out = row.value;
    return true;
  }
  return false;
}

/// For static_assert: no value and no text occurs twice.
template <class E, std::size_t N>
constexpr bool isOneToOne(const EnumText<E> (&table)[N]) {
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t j = i + 1; j < N; ++j) {
      if (table[i].value == table[j].value || std::string_view(table[i].text) == table[j].text) return false;
    }
  }
  return true;
}

}  // namespace Veltra
