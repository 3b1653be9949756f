// SPDX-License-Identifier: MIT
#include "parent/command/UsageWords.h"

#include <algorithm>
#include <charconv>

#include "base/Translation.h"
#include "parent/settings/Words.h"

namespace annivo {

namespace {

/// The option or value that an error of the parser begins with: "--days" of "--days: …".
std::string subjectOf(const std::string& text, std::string_view end) {
  return text.substr(0, text.find(end));
}

std::string problemWithValues(const CLI::ParseError& error) {
  std::string text = error.what();
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error)) {
    return translated("{1} needs a value", subjectOf(text, ":"));
  }
  if (dynamic_cast<const CLI::RequiredError*>(&error)) {
    return translated("{1} is missing", subjectOf(text, " is required"));
  }
  // "Could not convert: --days = x"
  if (dynamic_cast<const CLI::ConversionError*>(&error)) {
    const auto start = text.find(": ") + 2;
    return translated("{1} needs a whole number", subjectOf(text.substr(start), " = "));
  }
  return text;  // Ours: of a validator, or of CommandLine.
}

}  // namespace

void translateHelp(CLI::App& app) {
  const auto formatter = app.get_formatter();
  formatter->label("Usage", translated("Usage"));
  formatter->label("OPTIONS", translated("OPTIONS"));
  formatter->label("SUBCOMMAND", translated("COMMAND"));
  formatter->label("SUBCOMMANDS", translated("COMMANDS"));
  formatter->label("Positionals", translated("Words"));
  formatter->label("TEXT", translated("TEXT"));
  formatter->label("INT", translated("NUMBER"));
  formatter->label("REQUIRED", translated("REQUIRED"));
  app.option_defaults()->group(translated("Options"));
  app.set_help_flag("-h,--help", translated("Print this help and exit"));
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  return {[words](std::string& word) {
            if (std::find(words.begin(), words.end(), word) != words.end()) return std::string();
            return translated("there is no \"{1}\"; give {2}", word, listedAlternatives(words));
          },
          ""};
}

CLI::Validator numberFrom(int least, int most) {
  return {[least, most](std::string& word) {
            int number = 0;
            const char* const end = word.data() + word.size();
            const auto read = std::from_chars(word.data(), end, number);
            if (read.ec == std::errc() && read.ptr == end && number >= least && number <= most) {
              return std::string();
            }
            return translated("\"{1}\" is no number from {2} to {3}", word, std::to_string(least),
                              std::to_string(most));
          },
          ""};
}

const CLI::App& commandOf(const CLI::App& app) {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return *command;
}

std::string problem(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App& command = commandOf(app);
  const bool wantsCommand = !command.get_subcommands({}).empty();
  const std::vector<std::string> extras = app.remaining(true);
  if (extras.empty() || command.get_allow_extras()) {
    const bool commandMissing =
        wantsCommand && dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    return commandMissing ? translated("no command is given") : problemWithValues(error);
  }
  const std::string& word = extras.front();
  if (word.starts_with('-')) return translated("there is no option \"{1}\"", word);
  return wantsCommand ? translated("there is no command \"{1}\"", word)
                      : translated("\"{1}\" is a word too many", word);
}

}  // namespace annivo
