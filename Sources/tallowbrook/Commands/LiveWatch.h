// `tallowbrook watch` at a terminal: the host together with its live view.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Channels/LinesChannel.h"
#include "EventBridge/TallowbrookPaths.h"
#include "Loop/ChildPrograms.h"
#include "Store/Database.h"
#include "View/LiveView.h"
#include "Watch/Host.h"

namespace tallowbrook::host {

class LiveWatch {
 public:
    // `log` takes what is said, beside the screen; `exec` as in `WatchOptions`. The database must
    // outlive the value. Throws SQLite::Exception when the database fails.
    LiveWatch(TallowbrookPaths paths, Database& database, OpenTerminal terminal, TerminalText text,
              Troubles::Say log, const std::optional<std::string>& exec = {});

    // Until the user quits, the terminal is gone, or a signal asks for the end. Gives the exit
    // status. Throws SQLite::Exception as long as the view is not yet there to say it.
    int run();

 private:
    // What the view's content is read from.
    struct Seen {
        Database::Mark mark;
        bool leads = false;
        bool hasTroubles = false;
        bool operator==(const Seen&) const = default;
    };

    std::vector<Channel> channels(const std::optional<std::string>& exec);
    ViewActions actions();
    void say(const std::string& sentence);
    void tell(const NotificationContent& content);
    void lookAgain();
    ViewContent read();
    HostState hostState(const NotificationPreferences& preferences, Instant now);
    void setPaused(bool isPaused);
    void mute(const ListedSession& session);
    void focus(const ListedSession& session);
    std::string explain(const ListedSession& session);
    // False, and the reason becomes `databaseTrouble_`, when the database fails.
    bool withDatabase(const std::function<void()>& action);

    TallowbrookPaths paths_;
    Database& database_;
    Troubles::Say log_;
    PollLoop loop_;
    std::shared_ptr<ScreenLines> lines_;
    LiveView view_;
    ChildPrograms programs_{loop_};
    Host host_;

    Instant since_ = currentInstant();
    std::string lastTrouble_;      // the host's, which may be over
    std::string databaseTrouble_;  // of what was read last
    SessionList list_;             // that was read last
    NotificationPreferences preferences_;
    Seen seen_;
};

}  // namespace tallowbrook::host
