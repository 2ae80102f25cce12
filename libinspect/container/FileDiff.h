#pragma once

#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/ByteSource.h>

namespace Inspect {

/// One field that two files have otherwise; null where one lacks it.
struct Difference {
  std::string field;
  Json::Value a;
  Json::Value b;
};

/// Compares two containers field by field: sizes, section headers, records by their fields, other data by its bytes.
std::vector<Difference> differencesOf(const ByteSource& a, const ByteSource& b);

}  // namespace Inspect
