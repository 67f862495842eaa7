#include "View/Painting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Output/PrintableText.h"
#include "ViewSessions.h"

namespace tallowbrook::host {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using enum SessionStatus;

std::vector<SessionSnapshot> severalSessions() {
    auto asks = viewSession("docs", needsAttention, 2);
    asks.statusDetail.toolName = "AskUserQuestion";
    auto broke = viewSession("site", failed, 61);
    broke.statusDetail.errorType = "server_error";
    return {viewSession("api", needsAttention, 6),
            asks,
            broke,
            viewSession("app", working, 0),
            viewSession("infra", working, 24),
            endedSession("old")};
}

PaintedView painted(const ViewContent& content, ScreenSize size = {80, 24},
                    const ViewState& state = {}, const std::deque<std::string>& told = {}) {
    return paint(content, state, allActions(), told, size, viewTime);
}

std::string text(const ViewContent& content, ScreenSize size = {80, 24},
                 const ViewState& state = {}, const std::deque<std::string>& told = {}) {
    return painted(content, size, state, told).picture.text();
}

// The line that has this in it.
std::string lineWith(const std::string& part, const std::string& text) {
    const auto at = text.find(part);
    if (at == std::string::npos) return {};
    const auto begin = text.rfind('\n', at) + 1;
    return text.substr(begin, text.find('\n', at) - begin);
}

TEST(Painting, showsEachSessionOnALineWithAllThatTells) {
    const auto screen = text(viewContent(severalSessions()));
    EXPECT_EQ(lineWith("docs", screen),
              "› ● docs                  has a question                      2 min  Claude Code");
    EXPECT_EQ(lineWith("api", screen),
              "  ● api                   needs permission  Bash              6 min  Claude Code");
    EXPECT_EQ(lineWith("site", screen),
              "  ✗ site                  failed            server error        1 h  Claude Code");
    EXPECT_EQ(lineWith("infra", screen),
              "  ○ infra                 stale                              24 min  Claude Code");
    EXPECT_EQ(lineWith("app", screen),
              "  ▸ app                   working                            <1 min  Claude Code");
}

TEST(Painting, countsInItsTitle) {
    EXPECT_THAT(text(viewContent(severalSessions())),
                StartsWith("2 sessions wait for you, 1 failed, 1 working"));
    EXPECT_THAT(text(viewContent({})), StartsWith("No session waits for you"));
    EXPECT_THAT(text(viewContent(severalSessions()), {20, 10}), StartsWith("2 waiting\n"));
}

TEST(Painting, foldsWhatHasEndedIntoALine) {
    EXPECT_THAT(text(viewContent(severalSessions())), HasSubstr("1 ended (z shows)"));
    EXPECT_THAT(text(viewContent(severalSessions())), Not(HasSubstr("✓ old")));
    ViewState open;
    open.showsFolded = true;
    const auto screen = text(viewContent(severalSessions()), {80, 24}, open);
    EXPECT_THAT(screen, HasSubstr("1 ended (z folds)\n  ✓ old "));
}

TEST(Painting, saysHowTheHostStands) {
    auto content = viewContent({});
    content.host.leads = false;
    EXPECT_THAT(text(content), HasSubstr("Another host tells; this view looks on."));
    content = viewContent({});
    content.host.isPaused = true;
    EXPECT_THAT(text(content), HasSubstr("Paused: you are told nothing until p goes on."));
    content = viewContent({});
    content.host.quietUntil = "07:00";
    EXPECT_THAT(text(content), HasSubstr("Quiet hours: you are told nothing until 07:00."));
    content = viewContent({});
    content.host.isOff = true;
    EXPECT_THAT(text(content), HasSubstr("Notifications are switched off"));
    content = viewContent({});
    content.host.trouble = "The disk is full, and the spool is kept until there is room.";
    EXPECT_THAT(text(content, {40, 24}),
                HasSubstr("The disk is full, and the spool is kept\nuntil there is room.\n"));
}

TEST(Painting, showsWhatWasToldLastWhereThereIsRoom) {
    const std::deque<std::string> told{"one", "two", "three", "four"};
    const auto screen = text(viewContent({}), {80, 24}, {}, told);
    EXPECT_THAT(screen, HasSubstr("Told ─"));
    EXPECT_THAT(screen, HasSubstr("\ntwo\nthree\nfour\n"));
    EXPECT_THAT(text(viewContent({}), {80, 10}, {}, told), Not(HasSubstr("four")));
}

TEST(Painting, keepsTheSelectionInSightHoweverLongTheList) {
    std::vector<SessionSnapshot> many;
    for (int i = 100; i < 600; ++i)
        many.push_back(viewSession("p" + std::to_string(i), needsAttention, i));
    const auto content = viewContent(many);
    ViewState state;
    for (const auto& [selected, isFirst] :
         {std::pair{"p100", true}, {"p350", false}, {"p351", false}, {"p599", false}}) {
        state.selected = std::string{"claudeCode|id-"} + selected;
        const auto view = painted(content, {60, 12}, state);
        state.top = view.top;
        EXPECT_THAT(view.picture.text(), HasSubstr(std::string{"› ● "} + selected));
        EXPECT_EQ(view.picture.text().contains("↑"), !isFirst) << selected;
    }
    EXPECT_THAT(text(content, {60, 12}), HasSubstr(" ↓ 491 more\n"));
}

TEST(Painting, scrollsNoFurtherThanTheSelectionNeeds) {
    std::vector<SessionSnapshot> many;
    for (int i = 10; i < 60; ++i) many.push_back(viewSession(std::to_string(i), working, i));
    ViewState state;
    state.selected = "claudeCode|id-40";
    state.top = painted(viewContent(many), {60, 12}, state).top;
    state.selected = "claudeCode|id-39";
    EXPECT_EQ(painted(viewContent(many), {60, 12}, state).top, state.top);
}

TEST(Painting, fitsWindowsOfEverySize) {
    auto sessions = severalSessions();
    sessions.push_back(viewSession(std::string(300, 'x'), working));
    sessions.push_back(viewSession("日本語のとても長い名前のプロジェクト", working));
    auto content = viewContent(sessions);
    content.host.trouble = std::string(500, 'y');
    content.host.leads = false;
    const std::deque<std::string> told{std::string(300, 'z'), "日本語"};
    ViewState typing;
    typing.isTypingFilter = true;
    ViewState keys;
    keys.overlay = ViewState::Overlay{};
    ViewState explanation;
    explanation.overlay = {ViewState::Overlay::Kind::explanation, std::string(700, 'w') + "\n\nx"};
    for (std::size_t columns = 1; columns <= 400; columns += columns < 120 ? 1 : 35)
        for (const std::size_t rows : {1U, 2U, 3U, 5U, 9U, 14U, 16U, 28U, 60U})
            for (const auto& state : {ViewState{}, typing, keys, explanation}) {
                const auto picture = painted(content, {columns, rows}, state, told).picture;
                ASSERT_EQ(picture.lines.size(), rows);
                for (const auto& line : picture.lines)
                    for (std::size_t i = 0; i < line.size(); ++i) {
                        const auto end = line[i].column + PrintableText::width(line[i].text);
                        ASSERT_LE(end, i + 1 < line.size() ? line[i + 1].column : columns)
                            << columns << "x" << rows << ": " << line[i].text;
                    }
                ASSERT_LT(picture.cursor.value_or(0), columns);
            }
}

TEST(Painting, keepsTheNameAndTheTimeInTheNarrowestWindows) {
    const auto screen = text(viewContent(severalSessions()), {20, 10});
    EXPECT_THAT(screen, HasSubstr("  ● api        6 min\n"));
    EXPECT_THAT(screen, HasSubstr("\n? keys  q quit\n"));
}

TEST(Painting, leavesHalfOfTheWindowToTheListWhateverThereIsToSay) {
    auto content = viewContent(severalSessions());
    content.host = {.leads = false, .trouble = std::string(100, 'x'), .isPaused = true};
    const auto view = painted(content, {20, 10});
    EXPECT_EQ(view.pageHeight, 5U);
    EXPECT_THAT(view.picture.text(), StartsWith("2 waiting\nxxx"));
}

TEST(Painting, neverTellsByColourAlone) {
    // What each status is drawn with, without its words and its colours.
    std::set<std::string> symbols;
    for (const auto status : {working, needsAttention, completed, failed, interrupted, unknown}) {
        const auto screen = text(viewContent({viewSession("proj", status)}), {20, 10});
        symbols.insert(lineWith("proj", screen).substr(0, std::string{"› ● "}.size()));
    }
    EXPECT_EQ(symbols.size(), 6U);
}

TEST(Painting, letsNoTextOfASessionMoveTheCursor) {
    auto session = viewSession("a\x1B[2J\tb", needsAttention);
    session.statusDetail.toolName = "\x1B]0;title\x07";
    const auto screen = text(viewContent({session}), {80, 24}, {}, {"told \x1B[31m"});
    for (const char byte : {'\x1B', '\t', '\x07'}) EXPECT_FALSE(screen.contains(byte));
}

TEST(Painting, asksToBeDoneAgainAtTheNextMinuteInWhichATextChanges) {
    const auto nextOf = [](int minutes) {
        return painted(viewContent({viewSession("p", needsAttention, minutes)})).nextChange;
    };
    using std::chrono::ceil;
    EXPECT_EQ(nextOf(6), ceil<std::chrono::minutes>(viewTime + std::chrono::minutes{1}));
    EXPECT_EQ(nextOf(90), ceil<std::chrono::minutes>(viewTime + std::chrono::minutes{30}));
    EXPECT_EQ(painted(viewContent({})).nextChange, std::nullopt);
}

TEST(Painting, asksToBeDoneAgainWhenASilentSessionTurnsStale) {
    auto session = viewSession("p", working, 90);
    session.lastSeenAt = viewTime - std::chrono::minutes{14};
    EXPECT_EQ(painted(viewContent({session})).nextChange,
              std::chrono::ceil<std::chrono::minutes>(viewTime + std::chrono::minutes{1} +
                                                      std::chrono::microseconds{1}));
}

TEST(Painting, showsWhereTheFilterIsTyped) {
    ViewState state;
    state.isTypingFilter = true;
    state.filter = "ap";
    const auto picture = painted(viewContent(severalSessions()), {80, 24}, state).picture;
    EXPECT_EQ(picture.cursorRow, 22U);
    EXPECT_EQ(picture.cursor, std::string{"Only with: ap"}.size());
    EXPECT_THAT(picture.text(), HasSubstr("\nOnly with: ap\n"));
}

TEST(Painting, listsTheKeysOverTheWholeScreen) {
    ViewState state;
    state.overlay = ViewState::Overlay{};
    const auto screen = text(viewContent(severalSessions()), {80, 24}, state);
    EXPECT_THAT(screen, HasSubstr("Enter      bring the session's window to the front\n"));
    EXPECT_THAT(screen, Not(HasSubstr("server error")));
}

TEST(Painting, scrollsALongTextToItsEndAndNoFurther) {
    ViewState state;
    state.overlay = ViewState::Overlay{ViewState::Overlay::Kind::explanation, {}};
    for (int i = 1; i <= 50; ++i) state.overlay->text += "line " + std::to_string(i) + "\n";
    state.overlayTop = 1000;
    const auto view = painted(viewContent({}), {40, 10}, state);
    EXPECT_THAT(view.picture.text(), HasSubstr("\nline 50\n"));
    EXPECT_EQ(view.overlayTop, 50 - view.pageHeight);
}

}  // namespace
}  // namespace tallowbrook::host
