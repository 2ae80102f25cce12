#pragma once

#include <set>

#include <json/json.h>

#include "RecordTesting.h"

/// The files of tests/vectors, and the answers beside them.
namespace Vectors {

/// Compares the answers to each vector with what stands beside it. UPDATE_GOLDEN=1 in the environment writes them there
/// instead: answers change only where the text of a message or a member was added.
/// @param answersTo  receives the path of a file, and the object that its answers are put into
template <class AnswersTo>
void expectAnswers(const AnswersTo& answersTo) {
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(VELTRA_SOURCE_DIR "/tests/vectors")) {
    if (entry.path().extension() == ".vres") files.insert(entry.path());
  }
  EXPECT_GE(files.size(), 60u);
  for (const std::filesystem::path& file : files) {
    SCOPED_TRACE(file.filename());
    std::filesystem::path beside = file;
    beside.replace_extension(".json");
    Json::Value known(Json::objectValue), answers(Json::objectValue);
    if (std::ifstream in(beside); in) in >> known;
    answersTo(file.string(), answers);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    if (std::getenv("UPDATE_GOLDEN") == nullptr) {
      for (const std::string& member : answers.getMemberNames()) {
        EXPECT_EQ(Json::writeString(builder, known[member]), Json::writeString(builder, answers[member])) << member;
      }
      continue;
    }
    for (const std::string& member : answers.getMemberNames()) known[member] = answers[member];
    std::ofstream(beside) << Json::writeString(builder, known) << '\n';
  }
}

}  // namespace Vectors
