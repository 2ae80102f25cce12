#include <bsd/readpassphrase.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>

#include <fmt/format.h>
#include <gsl/util>

#include <libcrossplatform/common/jsonutil.h>
#include <libinspect/container/ByteSource.h>
#include <libinspect/container/JsonFaults.h>
#include <libinspect/records/ProfileView.h>

#include "Commands.h"

namespace Command {
namespace {

struct NetprofileArguments {
  std::string file = NetworkProfile::FILE_PATH;
  bool isNamed = false;  ///< the file was given by --file
  bool reveal = false;
  std::string setting;
  std::optional<std::string> value;
};

/// Where a file stops being JSON, for a complaint.
std::string faultIn(const std::string& file) {
  std::string text, error;
  return Inspect::readText(file, Veltra::JsonBounds::STYLED_BYTES, text, error) ? Inspect::jsonFaultIn(text)
                                                                                : "expected JSON";
}

/// Why a profile could not be read, by the reason that reading it left in errno.
std::string refusalOf(const std::string& file, int reason) {
  switch (reason) {
    case EISDIR:
      return "expected a file, found a folder";
    case ENOTSUP:
      return "expected a regular file, found a FIFO, a device or a socket";
    case EFBIG:
      return fmt::format("expected at most {} MiB of JSON with at most {} values, found more",
                         Veltra::JsonBounds::STYLED_BYTES >> 20, Veltra::JsonBounds::VALUES);
    case EPERM:
      return "expected a file of yours or root's, found somebody else's in a folder that others can write to; --file "
             "reads any";
    case EBADMSG:
      return faultIn(file);
    default:
      return std::strerror(reason);
  }
}

/// Reads the stored profile: one given by --file whoever owns it. A missing file is an empty profile if `allowed`.
bool readProfile(const NetprofileArguments& args, bool missingAllowed, NetworkProfile& profile) {
  if (args.isNamed ? profile.readFrom(args.file) : profile.read()) return true;
  const int reason = errno;
  if (reason == ENOENT && missingAllowed) return true;
  complain(fmt::format("{}: {}", args.file, refusalOf(args.file, reason)));
  return false;
}

int show(const NetprofileArguments& args, const Options& options) {
  NetworkProfile profile;
  if (!readProfile(args, false, profile)) return EXIT_COULD_NOT;
  const Json::Value json = Inspect::profileJson(profile, args.reveal);
  const auto text = [&json] {
    Table table({{"Setting"}, {"Value"}}, "setting");
    for (const Inspect::ProfileSetting& setting : Inspect::profileSettings()) {
      const Json::Value& value = json["settings"][setting.name];
      const std::string shown = value.isBool()   ? (value.asBool() ? "yes" : "no")
                                : value.isNull() ? "-"
                                                 : value.asString();
      table.add({setting.name, shown});
    }
    for (const Json::Value& network : json["recent"]) {
      table.add({"recent", fmt::format("{} ({})", network["ssid"].asString(), network["security"].asString())});
    }
    return table.text();
  };
  printDocument({text, [&json] { return Json::Value(json); }, {}, {}}, options);
  return EXIT_DONE;
}

/// One line without echo from the terminal, or the first line of standard input. At a prompt an empty line cancels; in
/// a file it is an empty secret.
bool readSecret(const std::string& name, std::string& secret) {
  constexpr std::size_t MOST = 4096;
  secret.reserve(MOST);  // growing would leave pieces behind in freed memory
  if (isatty(STDIN_FILENO) == 0) return static_cast<bool>(std::getline(std::cin, secret));
  secret.resize(MOST);
  const bool ok = readpassphrase((name + ": ").c_str(), secret.data(), secret.size(), RPP_ECHO_OFF) != nullptr;
  secret.resize(ok ? std::strlen(secret.c_str()) : 0);
  return !secret.empty();
}

int usage(const std::string& text) {
  complain(text);
  return EXIT_USAGE;
}

int set(const NetprofileArguments& args) {
  const bool hasValue = args.value.has_value();
  const Inspect::ProfileSetting* const setting = Inspect::findProfileSetting(args.setting);
  if (setting == nullptr) return usage(fmt::format("{}: no such setting; show lists them", args.setting));
  if (setting->set == nullptr) return usage(fmt::format("{}: can be shown, not set", args.setting));
  if (setting->secret && hasValue) {
    return usage(fmt::format("{}: a secret is read from a prompt or from standard input, never from the command line",
                             args.setting));
  }
  if (!setting->secret && !hasValue) return usage(fmt::format("{}: expected a value", args.setting));
  std::string value = args.value.value_or("");
  const auto wiping = gsl::finally([&] {
    if (!setting->secret) return;
    value.resize(value.capacity());  // also bytes of earlier, longer texts
    explicit_bzero(value.data(), value.size());
  });
  // The value is read first: while a prompt waits, somebody else may change the profile.
  if (setting->secret && !readSecret(setting->name, value)) {
    complain(fmt::format("{}: no value given; the profile is unchanged", args.setting));
    return EXIT_COULD_NOT;
  }
  NetworkProfile profile;
  const Veltra::FileStamp stamp = Veltra::FileStamp::of(args.file);
  if (!readProfile(args, true, profile)) return EXIT_COULD_NOT;
  if (!setting->set(profile, value)) {
    complain(fmt::format("{}: expected {}, found {}", args.setting, setting->wanted,
                         setting->secret ? "another value (not shown)" : "\"" + value + "\""));
    return EXIT_NO;
  }
  if (profile.saveTo(args.file, stamp)) return EXIT_DONE;
  const bool isChanged = errno == ESTALE;
  complain(isChanged ? fmt::format("{}: changed meanwhile, run it again", args.file)
                     : fmt::format("{}: cannot be written: {}", args.file, std::strerror(errno)));
  return EXIT_COULD_NOT;
}

int check(const NetprofileArguments& args, const Options& options) {
  NetworkProfile profile;
  if (!readProfile(args, false, profile)) return EXIT_COULD_NOT;
  std::string bytes, error;
  if (!Inspect::readText(args.file, Veltra::JsonBounds::STYLED_BYTES, bytes, error)) {
    complain(error);
    return EXIT_COULD_NOT;
  }
  std::vector<std::string> found = Inspect::checkProfileText(bytes);
  for (std::string& fault : Inspect::checkProfile(profile)) found.push_back(std::move(fault));
  const auto text = [&] {
    std::string lines = found.empty() ? printable(args.file) + ": nothing wrong\n" : "";
    for (const std::string& line : found) lines += printable(line) + "\n";
    return lines;
  };
  const auto json = [&] {
    Json::Value object(Json::objectValue);
    object["file"] = args.file;
    object["findings"] = Json::Value(Json::arrayValue);
    for (const std::string& line : found) object["findings"].append(line);
    return object;
  };
  printDocument({text, json, {}, {}}, options);
  return found.empty() ? EXIT_DONE : EXIT_NO;
}

}  // namespace

Subcommand netprofileCommand(const Options& options) {
  const auto args = std::make_shared<NetprofileArguments>();
  Subcommand command("netprofile", "Show, change and check the stored network profile");
  const Take takeFile = [args](const std::string& file) {
    args->file = file == "-" ? "./-" : file;  // never standard input: it is changed in place
    args->isNamed = true;
  };
  command.option("--file", "F", takeFile, "the stored profile").showing(args->file);

  Subcommand& showing = command.commands.emplace_back("show", "The settings, secrets masked");
  showing.flag("--reveal", args->reveal, REVEAL_HELP);
  showing.run = [args, &options] { return show(*args, options); };

  Subcommand& setting =
      command.commands.emplace_back("set", "Change one setting; a secret is read from standard input");
  setting.place("NAME", "NAME", &args->setting, "its name, as show prints it").required();
  setting.place("VALUE", "VALUE", &args->value, "its new value");
  setting.run = [args] { return set(*args); };

  Subcommand& checking = command.commands.emplace_back("check", "Check whether the stored values are valid");
  checking.run = [args, &options] { return check(*args, options); };
  return command;
}

}  // namespace Command
