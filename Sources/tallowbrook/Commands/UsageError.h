// What was wrong with the words of a command line, in the words of its user.
#pragma once

#include "Output/Sentence.h"

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace tallowbrook::host {

// Of the tree that has just failed to parse.
Sentence usageError(const CLI::App& tree, const CLI::ParseError& error);

// That there is no such command, and which one was meant perhaps.
Sentence unknownCommand(const CLI::App& tree, const std::string& word);

}  // namespace tallowbrook::host
