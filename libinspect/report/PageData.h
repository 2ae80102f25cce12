#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include <kainjow/mustache.hpp>

namespace Inspect {

/// What a template is filled with. Inside the report alone: no other header includes it.
using PageData = kainjow::mustache::data;

/// An object of texts; an empty text is omitted, so that its section is left out.
inline PageData pageObject(std::initializer_list<std::pair<const char*, std::string>> members) {
  PageData data;
  for (const auto& [name, text] : members) {
    if (!text.empty()) data[name] = PageData(text);
  }
  return data;
}

/// A list with an element for each item, all in memory at once: for few items.
template <class Items, class DataOf>
PageData pageList(const Items& items, DataOf dataOf) {
  PageData list(PageData::type::list);
  for (const auto& item : items) list << dataOf(item);
  return list;
}

}  // namespace Inspect
