// What goes wrong while a host watches: said once for as long as it lasts.
//
// Used by one thread.
#pragma once

#include <filesystem>
#include <functional>
#include <set>
#include <string>

namespace tallowbrook::host {

class Troubles {
 public:
    // Takes a whole sentence, to the user and the log.
    using Say = std::function<void(const std::string& sentence)>;
    // `databaseFile` is named where it turns out to be damaged.
    Troubles(Say say, std::filesystem::path databaseFile)
        : say_{std::move(say)}, databaseFile_{std::move(databaseFile)} {}

    // Runs one pass, and says what it adds unless that stood after the pass before already. A
    // failure of the database ends the pass and is a trouble too: what was not committed by then is
    // still where it came from. Tells whether there was no trouble.
    bool during(const std::function<void()>& pass);

    // Belongs to the pass that runs.
    void add(std::string sentence) { found_.insert(std::move(sentence)); }

    // For what happens once and does not last.
    void sayOnce(const std::string& sentence) const { say_(sentence); }

    // Whether there was one in the last pass.
    bool stand() const { return !standing_.empty(); }

 private:
    Say say_;
    std::filesystem::path databaseFile_;
    std::set<std::string> found_;
    std::set<std::string> standing_;
};

}  // namespace tallowbrook::host
