#include <libinspect/job/JobDescription.h>

#include <filesystem>

#include <fmt/format.h>
#include <json/writer.h>

#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/container/ByteSource.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/describe/ObjectReader.h>

namespace Inspect {
namespace {

/// The members that are texts: read and written in this order.
struct TextMember {
  const char* key;
  std::string JobDescription::*text;
};
constexpr TextMember TEXTS[] = {
    {"title", &JobDescription::title},         {"customer", &JobDescription::customer},
    {"site", &JobDescription::site},           {"operator", &JobDescription::operatorName},
    {"reference", &JobDescription::reference}, {"logo", &JobDescription::logo},
};
constexpr char EXPECTED[] = "expected";
constexpr char GUESSED[] = "guessed";

}  // namespace

bool parseJobDescription(const std::string& text, JobDescription& description, ExpectedIds& expected,
                         std::string& error) {
  Json::Value root;
  error.clear();
  if (!Dump::isUtf8(text)) {
    error = "expected UTF-8 text, found other bytes";
    return false;
  }
  if (!parseWholeJson(text, root, error)) return false;
  ObjectReader in(root, text, "job", error);
  for (const TextMember& member : TEXTS) in.text(member.key, description.*member.text);
  const Json::Value* const list = in.take(EXPECTED);
  if (list != nullptr && !list->isArray()) in.fail(EXPECTED, *list, "a list of \"FIRST..LAST\" and IDs");
  for (Json::ArrayIndex i = 0; in.ok() && list != nullptr && i < list->size(); ++i) {
    const Json::Value& range = (*list)[i];
    const std::string key = fmt::format("{}[{}]", EXPECTED, i);
    std::string refusal;
    if (!range.isString()) {
      in.fail(key, range, "a text, \"FIRST..LAST\" or an ID");
    } else if (!expected.add(range.asString(), refusal)) {
      error = fmt::format("job.{}: {}", key, refusal);
    } else {
      description.expected.push_back(range.asString());
    }
  }
  in.boolean(GUESSED, description.isGuessed);
  in.finish();
  return in.ok();
}

bool readJobDescription(const std::string& path, JobDescription& description, ExpectedIds& expected,
                        std::string& error) {
  std::string text;
  if (!readText(path, MOST_TEXT, text, error)) return false;
  if (!parseJobDescription(text, description, expected, error)) {
    error = fmt::format("{}: {}", path, error);
    return false;
  }
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  if (!description.logo.empty()) description.logo = (folder / description.logo).string();
  return true;
}

std::string textOf(const JobDescription& description) {
  Json::Value json(Json::objectValue);
  for (const TextMember& member : TEXTS) json[member.key] = description.*member.text;
  json[EXPECTED] = Json::Value(Json::arrayValue);
  for (const std::string& range : description.expected) json[EXPECTED].append(range);
  json[GUESSED] = description.isGuessed;
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  builder["enableYAMLCompatibility"] = true;  // no space before a colon
  return Json::writeString(builder, json) + "\n";
}

}  // namespace Inspect
