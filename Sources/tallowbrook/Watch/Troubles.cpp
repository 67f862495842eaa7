#include "Watch/Troubles.h"

#include <fmt/core.h>

#include "Store/Database.h"

namespace tallowbrook::host {

bool Troubles::during(const std::function<void()>& pass) {
    found_.clear();
    try {
        pass();
    } catch (const SQLite::Exception& error) {
        // A full disk or a locked database may be over by the next pass: the host goes on.
        add(fmt::format("The database failed: {}. The spool is kept.", error.what()));
    }
    for (const auto& trouble : found_)
        if (!standing_.contains(trouble)) say_(trouble);
    standing_ = std::move(found_);
    return standing_.empty();
}

}  // namespace tallowbrook::host
