#include "Arguments.h"

namespace tallowbrook::hook {

Arguments parseArguments(int argc, const char* const* argv) {
    Arguments arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        if (word == "--version") {
            arguments.wantsVersion = true;
            return arguments;
        }
        if (word == "--test")
            arguments.origin = EventOrigin::test;
        else if (word != "--home")
            arguments.positional.push_back(word);
        // A "--home" at the end names nothing; the event goes to the standard home.
        else if (i + 1 < argc)
            arguments.home = argv[++i];
    }
    return arguments;
}

}  // namespace tallowbrook::hook
