// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace annivo {

// What the parser of the command line says itself, in the person's language: it has no seam of its
// own for its sentences.

/// Headings of the help and the help flag; to be called before any option or command is added.
void translateHelp(CLI::App& app);
/// Accepts one of the words.
[[nodiscard]] CLI::Validator oneOf(const std::vector<std::string>& words);
/// Accepts a whole number from `least` to `most`.
[[nodiscard]] CLI::Validator numberFrom(int least, int most);

/// The innermost command that the words named.
[[nodiscard]] const CLI::App& commandOf(const CLI::App& app);
/// What is wrong with words that make no command: "PATH is missing".
[[nodiscard]] std::string problem(const CLI::App& app, const CLI::ParseError& error);

}  // namespace annivo
