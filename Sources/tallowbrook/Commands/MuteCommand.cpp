#include "Commands/MuteCommand.h"

#include <fmt/core.h>

#include <algorithm>
#include <memory>

#include "Commands/CommandLine.h"
#include "Commands/DatabaseDoor.h"
#include "Commands/EndWords.h"
#include "Commands/SessionChoice.h"
#include "EventBridge/SpoolSignal.h"
#include "Output/PrintableText.h"
#include "Output/StandardStreams.h"
#include "Store/Settings.h"

namespace tallowbrook::host {
namespace {

// What the user calls by this name, without an end.
std::expected<Mute, Sentence> named(const std::string& name, Database& database, Instant now) {
    if (const auto session = chooseSession(database, name, now))
        return Mute{MuteScope::session, session->snapshot.id(), std::nullopt};
    const auto all = listedSessions(database, ListScope::all, now).sessions;
    const bool isProject = std::ranges::any_of(
        all, [&](const ListedSession& session) { return session.snapshot.projectLabel() == name; });
    if (isProject) return Mute{MuteScope::project, name, std::nullopt};
    return std::unexpected(
        Sentence{fmt::format("There is no session and no project \"{}\"", name)});
}

std::string describe(const Mute& mute) {
    return PrintableText::printable(fmt::format(
        "{} {}", mute.scope == MuteScope::session ? "The session" : "The project", mute.name));
}

int refuse(const Sentence& why) {
    return StandardStreams::fail(why.followedBy("Nothing was changed."), ExitStatus::wrongUsage);
}

}  // namespace

void changeMutes(Database& database, Instant now, const std::function<void(Mutes&)>& how) {
    auto transaction = database.beginWriting();
    Settings settings{database};
    auto mutes = settings.mutes().asOf(now);
    how(mutes);
    settings.setMutes(mutes);
    transaction.commit();
    // A host that sleeps must learn of it.
    SpoolSignal::post();
}

int mute(const TallowbrookPaths& paths, const std::string& name, const EndWordsGiven& words) {
    return withExistingDatabase(paths, [&](Database& database) {
        const Instant now = currentInstant();
        const auto end = endOf(words.first, words.second, now, Calendar::current());
        if (!end) return refuse(end.error());
        auto mute = named(name, database, now);
        if (!mute) return refuse(mute.error());
        mute->until = *end;
        changeMutes(database, now, [&](Mutes& mutes) { mutes.add(*mute); });
        return StandardStreams::showAsResult(describe(*mute) + " is muted " +
                                             untilWords(*end, now) + ".\n");
    });
}

int unmute(const TallowbrookPaths& paths, const std::optional<std::string>& name) {
    return withExistingDatabase(paths, [&](Database& database) {
        const Instant now = currentInstant();
        std::optional<Mute> wanted;
        if (name) {
            const auto found = named(*name, database, now);
            if (!found) return refuse(found.error());
            wanted = *found;
        }
        const auto isMeant = [&](const Mute& mute) {
            return !wanted || (mute.scope == wanted->scope && mute.name == wanted->name);
        };
        std::string text;
        changeMutes(database, now, [&](Mutes& mutes) {
            std::erase_if(mutes.all, [&](const Mute& mute) {
                if (isMeant(mute)) text += describe(mute) + " is no longer muted.\n";
                return isMeant(mute);
            });
        });
        if (text.empty() && wanted) return refuse(Sentence{describe(*wanted) + " was not muted"});
        return StandardStreams::showAsResult(text.empty() ? "Nothing was muted.\n" : text);
    });
}

void addMuteCommands(CommandLine& line) {
    struct Words {
        std::string name;
        EndWordsGiven end;
    };
    const auto given = std::make_shared<Words>();
    auto words = line.add(
        "mute", "Hear nothing of a session or a project: mute 2 for 1h",
        [given](const TallowbrookPaths& paths) { return mute(paths, given->name, given->end); });
    words.addOperand("SESSION|PROJECT", given->name,
                     "Its number in the list, the beginning of its id, or a project's name");
    words.addOptionalOperand("TIME", given->end.first,
                             "A span such as 30m or 1h30m; without, until you unmute it");
    words.addOptionalOperand("HOUR", given->end.second, "Behind \"until\": a time such as 14:00");

    const auto name = std::make_shared<std::optional<std::string>>();
    auto others = line.add("unmute", "Hear of a session or a project again, or of all",
                           [name](const TallowbrookPaths& paths) { return unmute(paths, *name); });
    others.addOptionalOperand("SESSION|PROJECT", *name, "As with mute; without, all");
}

}  // namespace tallowbrook::host
