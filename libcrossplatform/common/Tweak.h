#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <libcrossplatform/serialization/ISerializable.h>

namespace Veltra {

/// Outcome of setting a tuning value from text. After any but TWEAK_OK the value is unchanged.
enum TweakStatus : int32_t {
  TWEAK_OK = 0,
  TWEAK_UNKNOWN_NAME = -1,  ///< the list has no tweak of that name
  TWEAK_NOT_A_VALUE = -2,   ///< the text as a whole is not a value of the tweak's type
  TWEAK_OUT_OF_RANGE = -3,  ///< it is a number, but the type cannot hold it
};

/// A tuning value: a parameter of an algorithm that a developer may change in a running instrument. It has a name, a
/// type, a default and a line of help. Never copied: its address identifies it.
/// On the wire: plain inline record, the value alone, docs/format.md#tweak.
class VELTRA_EXPORT TweakBase : public Marshal::ISerializable, public Dump::IDumpable {
 public:
  ~TweakBase() override;
  TweakBase(const TweakBase&) = delete;
  TweakBase& operator=(const TweakBase&) = delete;

  const std::string& getName() const { return _name; }  ///< unique in a TweakList
  const std::string& getHelp() const { return _help; }  ///< one line for developers
  virtual const char* getTypeName() const = 0;          ///< "int", "unsigned int", "float" or "string"

  ///@{
  /// Texts that setFromText() reads back. Numbers are decimal whatever the locale; a float has the fewest digits that
  /// give it back, or is "NaN", "+inf" or "-inf".
  virtual std::string getValueText() const = 0;
  virtual std::string getDefaultText() const = 0;
  ///@}

  /// Sets the value from a whole text: no spaces, no "+" before a number. A string accepts any text.
  /// @return TWEAK_OK, TWEAK_NOT_A_VALUE or TWEAK_OUT_OF_RANGE
  [[nodiscard]] virtual TweakStatus setFromText(std::string_view text) = 0;
  /// Resets the value to its default.
  virtual void reset() = 0;

  /// One field: name and value.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;

 protected:
  TweakBase(std::string name, std::string help) : _name(std::move(name)), _help(std::move(help)) {}

 private:
  const std::string _name;
  const std::string _help;
};

/// A tuning value of type int, unsigned int, float or std::string.
template <class T>
class VELTRA_EXPORT Tweak final : public TweakBase {
 public:
  Tweak(std::string name, T defaultValue, std::string help)
      : TweakBase(std::move(name), std::move(help)), _value(defaultValue), _default(std::move(defaultValue)) {}

  const T& get() const { return _value; }           ///< in the unit of the algorithm; valid until it is set
  void set(T value) { _value = std::move(value); }  ///< any value: no range is checked
  const T& getDefault() const { return _default; }  ///< never changes

  const char* getTypeName() const override;
  std::string getValueText() const override;
  std::string getDefaultText() const override;
  [[nodiscard]] TweakStatus setFromText(std::string_view text) override;
  void reset() override;

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out, the value is then unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);

  T _value;
  const T _default;
};

extern template class Tweak<int>;
extern template class Tweak<unsigned int>;
extern template class Tweak<float>;
extern template class Tweak<std::string>;

/// What a listing shows of a tweak, all as text.
struct TweakInfo {
  std::string name;          ///< TweakBase::getName()
  std::string type;          ///< TweakBase::getTypeName()
  std::string value;         ///< TweakBase::getValueText()
  std::string defaultValue;  ///< TweakBase::getDefaultText()
  std::string help;          ///< TweakBase::getHelp()
};

/// Finds tuning values by name. The values belong to the code that uses them: the list borrows them, so each
/// must outlive it. Not synchronised.
class VELTRA_EXPORT TweakList {
 public:
  /// Registers a tweak. @return false, reported as an assertion, when the list has one of that name, which stays
  [[nodiscard]] bool add(TweakBase& tweak);
  std::size_t size() const { return _tweaks.size(); }  ///< tweaks registered
  /// The tweak of exactly that name; null when there is none.
  TweakBase* find(std::string_view name);

  /// Sets a tweak from text, as TweakBase::setFromText() does.
  /// @param message  receives one line that names the fault; empty on success
  [[nodiscard]] TweakStatus set(std::string_view name, std::string_view text, std::string& message);
  /// Resets every tweak to its default.
  void reset();
  /// All tweaks, sorted by name.
  std::vector<TweakInfo> list() const;

 private:
  std::map<std::string_view, TweakBase*> _tweaks;  // the keys are the tweaks' own names
};

}  // namespace Veltra
