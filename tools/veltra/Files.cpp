#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include <tools/inspect/FileSummary.h>

#include "Commands.h"

namespace Command {

int answerForFiles(const std::vector<std::string>& files, const Options& options,
                   const std::function<FileAnswer(const Inspect::ByteSource&)>& answer) {
  int code = EXIT_DONE;
  Json::Value document(Json::objectValue);
  document["files"] = Json::Value(Json::arrayValue);
  for (const std::string& path : files) {
    std::string error;
    Inspect::ByteSource source;
    if (!source.open(path, error)) {
      complain(error);
      code = worse(code, EXIT_COULD_NOT);
      continue;
    }
    const FileAnswer found = answer(source);
    if (options.format == FORMAT_JSON) document["files"].append(found.json);
    if (options.format == FORMAT_JSONL) std::for_each(found.lines.begin(), found.lines.end(), printJsonLine);
    std::fflush(stdout);
    for (const Inspect::Finding& finding : found.findings) {
      complain(describe(source.name(), finding));
      if (Inspect::isDamage(finding.code)) code = worse(code, EXIT_NO);
    }
  }
  if (options.format == FORMAT_JSON) printJson(document);
  return code;
}

bool refusesToReplace(const std::string& path, bool force) {
  struct stat info {};
  if (force || lstat(path.c_str(), &info) != 0) return false;
  complain(path + ": exists; --force replaces it");
  return true;
}

}  // namespace Command
