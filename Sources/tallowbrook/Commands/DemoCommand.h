// `tallowbrook demo`: what the views look like with sessions in them.
#pragma once

namespace tallowbrook::host {

// Shows made-up sessions and their events, and stores nothing. Gives the exit status.
int demo();

}  // namespace tallowbrook::host
