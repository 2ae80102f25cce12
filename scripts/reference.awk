# Reads a header for Doxygen: gives the members that mean the same in every record their one comment, unless they have
# one of their own, and makes links to other pages text.
function say(words) { sub(/^ */, "&/** " words " */ ") }

FILENAME ~ /[.]md$/ { gsub(/\]\([^)]*[.]md[^)]*\)/, ""); gsub(/\[/, ""); print; next }
NR == 1 { printf "/** @file */ " }   # without it, what is in no namespace is left out
/^(class|struct) / { for (i = 2; i <= NF && $i ~ /^VELTRA_EXPORT$/; ++i) { } name = $i }
!/\/\/\// && !/= delete/ && !own && !within {
  if (/^  static constexpr uint8_t CLASS_VERSION =/) say("Newest class version: written, and read with all before it.")
  else if (/^  static constexpr .*TOO_NEW_STATUS =/) say("Code of a version byte above CLASS_VERSION.")
  else if (/^  static constexpr uint32_t SERIAL_TYPE_ID =/) say("Combined id of the record on the wire.")
  else if (/^  static constexpr const char\* JSON_ROOT_NAME =/) say("The one member of the record's JSON, which holds all others.")
  else if (/^  void clear\(\)/) say("Makes it as default-constructed.")
  else if (/^  bool operator==\(const [A-Za-z]+& other\) const/) say("Every member equal.")
  else if (/^  bool operator!=\(const [A-Za-z]+& other\) const/) say("The opposite of operator==().")
  else if (/^  void swap\([A-Za-z]+& other\) noexcept/) say("Exchanges the two.")
  else if (name != "" && $0 ~ "^  " name "\\(const " name "&( other)?\\)") say("Copies all of it.")
  else if (name != "" && $0 ~ "^  " name "\\(" name "&&( other)?\\)") say("Takes all of it and leaves the other cleared.")
  else if (name != "" && $0 ~ "^  " name "& operator=\\((const )?" name "(&|&&)?( other)?\\)") say("Replaces all of it.")
  else if (name != "" && $0 ~ "^  (explicit )?" name "\\([A-Za-z]") say("Every member as given.")
  else if (/^VELTRA_EXPORT gsl::span<const EnumText<[A-Za-z]+>> enumTexts</) say("The texts in the order of their values.")
  else if (/^VELTRA_EXPORT [A-Za-z]+ from[A-Za-z]+String\(const std::string& text\);/) say("The value with exactly this text; -1 without one.")
  else if (/^VELTRA_EXPORT const char\* toString\([A-Za-z]+ [a-z]+\);/) say("The text of a value. Outside its list it is empty, or the fallback of the enumeration after an assertion.")
}
!/\/\/\// && !own {
  if (/^  VELTRA_ALWAYS_INLINE void (boolean|[iu](8|16|32|64)|f32|i8ReadAsU8)\(/) say("A value in the width of the verb.")
  else if (/^  unsigned write[A-Z].* final /) say("As IObjectWriter has it.")
}
{
  own = /^ *\/\/\// || (own && /^ *template </)
  if (/\/\/\/@[{]/) within = 1
  if (/\/\/\/@[}]/) within = 0
  gsub(/\.md#/, ".md\\#")
  print
}
