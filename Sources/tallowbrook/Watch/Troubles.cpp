#include "Watch/Troubles.h"

#include "Store/Database.h"
#include "Store/DatabaseFailure.h"

namespace tallowbrook::host {

bool Troubles::during(const std::function<void()>& pass) {
    found_.clear();
    try {
        pass();
    } catch (const SQLite::Exception& error) {
        // A full disk or a locked database may be over by the next pass: the host goes on.
        add(databaseFailure(databaseFile_, error).followedBy("The spool is kept.").text());
    }
    for (const auto& trouble : found_)
        if (!standing_.contains(trouble)) say_(trouble);
    standing_ = std::move(found_);
    return standing_.empty();
}

}  // namespace tallowbrook::host
