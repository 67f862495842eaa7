// `tallowbrook demo`: what the views look like with sessions in them.
#pragma once

namespace tallowbrook::host {

class CommandLine;

// Shows made-up sessions and their events, and stores nothing. Gives the exit status.
int demo();

// Adds the command to the command line.
void addDemoCommand(CommandLine& line);

}  // namespace tallowbrook::host
