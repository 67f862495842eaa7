#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HookConfigSamples.h"

namespace tallowbrook {
namespace {

using State = HookInstallState;

std::expected<State, HookConfigError> inspected(const std::optional<std::string>& text) {
    return HookConfigMerger::inspect(text, sampleSpec());
}

std::string startWith(const std::string& handlers) {
    return configOf(eventOf("Start", groupOf(handlers)));
}

// Of a file with this one handler under a wanted event.
State stateWith(const std::string& handler) {
    return inspected(startWith(handler)).value_or(State::installed());
}

State stateWithCommand(const std::string& command) {
    return stateWith(R"({"type":"command","command":")" + OrderedJSON::escape(command) + "\"}");
}

TEST(HookConfigInspection, findsNothingWhereThereIsNothing) {
    EXPECT_EQ(inspected(std::nullopt), State::notConfigured());
    for (const std::string& text : std::vector<std::string>{
             "", " \t\r\n", "{}", R"({"model":"x"})", R"({"hooks":{}})",
             R"({"hooks":{"Start":[],"Other":[{}]}})", startWith(foreignHandler)})
        EXPECT_EQ(inspected(text), State::notConfigured()) << text;
}

TEST(HookConfigInspection, tellsWhichEventsAreMissingInTheOrderOfTheSpec) {
    auto spec = sampleSpec();
    spec.events = {"Start", "Stop", "End"};
    const auto with = [&](const std::string& event) {
        return HookConfigMerger::inspect(configOf(eventOf(event, groupOf(exactHandler))), spec);
    };
    EXPECT_EQ(with("Start"), State::partial({"Stop", "End"}));
    EXPECT_EQ(with("Stop"), State::partial({"Start", "End"}));
    EXPECT_EQ(with("Other"), State::notConfigured()) << "no wanted event has a handler";
    EXPECT_EQ(HookConfigMerger::inspect(installedConfig, spec), State::partial({"End"}));
    EXPECT_EQ(inspected(installedConfig), State::installed());
}

TEST(HookConfigInspection, findsTheHandlerInAnyGroupAmongOthers) {
    EXPECT_EQ(inspected(configOf(
                  eventOf("Start", groupOf(foreignHandler) + R"(,{"matcher":"x"},)" +
                                       R"({"matcher":"y","hooks":[)" + foreignHandler + "," +
                                       exactHandler + "]}") +
                  "," + eventOf("Stop", groupOf(exactHandler) + "," + groupOf(exactHandler)))),
              State::installed());
}

TEST(HookConfigInspection, comparesOnlyWhatMakesTheHandlerRun) {
    const auto exact = State::partial({"Stop"});
    for (
        const char* handler : {
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":["claude-code"],
                 "timeout":60,"other":{}})",
            R"({"args":["claude-code"],"command":"/Users/x/bin/tallowbrook-hook","type":"command"})",
            R"({"type":"\u0063ommand","command":"\/Users\/x\/bin\/tallowbrook-hook",
                 "args":["claude\u002dcode"]})",
        })
        EXPECT_EQ(stateWith(handler), exact) << handler;
}

TEST(HookConfigInspection, countsEveryHandlerOfOursThatIsNotExact) {
    for (
        const char* handler : {
            R"({"type":"command","command":"/old/tallowbrook-hook","args":["claude-code"]})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook"})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":[]})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":["codex"]})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":["claude-code","x"]})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":"claude-code"})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook","args":[1]})",
            R"({"type":"command","command":"/Users/x/bin/tallowbrook-hook claude-code"})",
        })
        EXPECT_EQ(stateWith(handler), State::needsRepair(1)) << handler;
    EXPECT_EQ(inspected(configOf(
                  eventOf("Start", groupOf(exactHandler + "," + staleHandler)) + "," +
                  eventOf("Stop", groupOf(exactHandler)) + "," +
                  eventOf("Unknown", groupOf(staleHandler) + "," + groupOf(staleHandler)))),
              State::needsRepair(3))
        << "one stale handler outweighs everything installed";
}

TEST(HookConfigInspection, takesAHandlerForOursByTheHelpersNameAsAWord) {
    const auto ours = State::needsRepair(1);
    for (const char* command :
         {"tallowbrook-hook", "/opt/x/tallowbrook-hook claude-code",
          "'/a b/tallowbrook-hook' codex", "\"/a b/tallowbrook-hook\" codex",
          "env X=1 tallowbrook-hook", "sh -c 'tallowbrook-hook'",
          "mytallowbrook-hook; tallowbrook-hook", "/tallowbrook-hook/tallowbrook-hook x"})
        EXPECT_EQ(stateWithCommand(command), ours) << command;
    for (const char* command :
         {"", "tallowbrook", "tallowbrook-hook-old", "mytallowbrook-hook", "Tallowbrook-Hook",
          "/opt/tallowbrook-hook/run", "tallowbrook-hook;", "(tallowbrook-hook)",
          "\ttallowbrook-hook", "tallowbrook-hook\n", "=tallowbrook-hook",
          "tallowbrook-hooktallowbrook-hook"})
        EXPECT_EQ(stateWithCommand(command), State::notConfigured()) << command;
}

TEST(HookConfigInspection, leavesOtherKindsOfHandlersAlone) {
    for (const char* handler : {
             R"({"type":"prompt","command":"/old/tallowbrook-hook"})",
             R"({"command":"/old/tallowbrook-hook"})",
             R"({"type":1,"command":"/old/tallowbrook-hook"})",
             R"({"type":"command","command":["/old/tallowbrook-hook"]})",
             R"({"type":"command"})",
             R"("/old/tallowbrook-hook")",
             "[]",
             "null",
             "{}",
         })
        EXPECT_EQ(stateWith(handler), State::notConfigured()) << handler;
}

TEST(HookConfigInspection, ofAShellLineComparesTheLineAlone) {
    const auto spec = HookInstallSpec::codex(sampleHelper);
    const auto stateOf = [&](const std::string& members) {
        const auto handler = R"({"type":"command",)" + members + "}";
        return HookConfigMerger::inspect(configOf(eventOf("Stop", groupOf(handler))), spec).value();
    };
    auto others = spec.events;
    std::erase(others, "Stop");
    for (const char* exact : {R"("command":"'/Users/x/bin/tallowbrook-hook' codex")",
                              R"("command":"'/Users/x/bin/tallowbrook-hook' codex","args":["x"])"})
        EXPECT_EQ(stateOf(exact), State::partial(others)) << exact;
    for (const char* stale : {R"("command":"/Users/x/bin/tallowbrook-hook codex")",
                              R"("command":"'/Users/x/bin/tallowbrook-hook'  codex")",
                              R"("command":"'/Users/x/bin/tallowbrook-hook'","args":["codex"])"})
        EXPECT_EQ(stateOf(stale), State::needsRepair(1)) << stale;
}

// Each of the three operations meets the same walls.
void expectAllFail(const std::string& text, const std::string& description) {
    const auto spec = sampleSpec();
    EXPECT_EQ(failureOf(HookConfigMerger::inspect(text, spec)), description);
    EXPECT_EQ(failureOf(HookConfigMerger::install(text, spec)), description);
    EXPECT_EQ(failureOf(HookConfigMerger::uninstall(text, spec)), description);
}

TEST(HookConfig, ofAnUnexpectedShapeStopsEveryOperation) {
    struct Row {
        std::string text;
        const char* path;
        const char* kind;
    };
    for (const auto& [text, path, kind] : {
             Row{R"({"hooks":[]})", "hooks", "object"},
             Row{R"({"hooks":null})", "hooks", "object"},
             Row{R"({"hooks":"x"})", "hooks", "object"},
             Row{R"({"hooks":{"Start":{}}})", "hooks.Start", "array"},
             Row{R"({"hooks":{"Other":"x"}})", "hooks.Other", "array"},
             Row{R"({"hooks":{"a b.c":1}})", "hooks.a b.c", "array"},
             Row{R"({"hooks":{"Start":[1]}})", "hooks.Start[]", "object"},
             Row{R"({"hooks":{"Start":[{},[]]}})", "hooks.Start[]", "object"},
             Row{R"({"hooks":{"Start":[{"hooks":{}}]}})", "hooks.Start[].hooks", "array"},
             Row{R"({"hooks":{"Other":[{"hooks":null}]}})", "hooks.Other[].hooks", "array"},
             Row{R"({"hooks":{"St\u0061rt":[{"hooks":1}]}})", "hooks.Start[].hooks", "array"},
         })
        expectAllFail(text, unexpectedStructure(path, kind));
}

TEST(HookConfig, withAHooksArrayIsRefusedInTheseWords) {
    EXPECT_EQ(
        failureOf(inspected(R"({"hooks":[]})")),
        "Unexpected structure at hooks (expected object). The merge is ambiguous, so the file "
        "was not modified.");
}

TEST(HookConfigInspection, tellsTheOutermostOfSeveralSurprises) {
    EXPECT_EQ(failureOf(inspected(R"({"hooks":{"Start":[1],"Stop":{}}})")),
              unexpectedStructure("hooks.Stop", "array"));
}

TEST(HookConfig, thatIsNoObjectStopsEveryOperation) {
    for (const char* text : {"[]", "null", "1", R"("x")"})
        expectAllFail(text,
                      "The file's top-level value is not a JSON object. It was not modified.");
}

TEST(HookConfig, thatIsNoJSONStopsEveryOperation) {
    expectAllFail(
        "{\n  \"a\": 1,\n}",
        "The file is not valid JSON (line 3, column 1: Expected a string key). It was not "
        "modified.");
    for (const char* text :
         {"\xEF\xBB\xBF{}", R"({"a":1,"a":2})", "// comment\n{}", "{\"hooks\":{}} x", "{", "\x01"})
        for (const auto& error : {HookConfigMerger::inspect(text, sampleSpec()).error(),
                                  HookConfigMerger::install(text, sampleSpec()).error(),
                                  HookConfigMerger::uninstall(text, sampleSpec()).error()})
            EXPECT_EQ(error, HookConfigError::malformedJSON(OrderedJSON::parse(text).error()));
}

}  // namespace
}  // namespace tallowbrook
