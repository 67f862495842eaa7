// `tallowbrook help` and `tallowbrook version`.
#pragma once

namespace tallowbrook::host {

class CommandLine;

// `help` shows the help of all, of one command, or of the topic "exit-codes". Gives the exit
// status: 0, or 2 for a word that is neither.
void addHelpCommands(CommandLine& line);

}  // namespace tallowbrook::host
