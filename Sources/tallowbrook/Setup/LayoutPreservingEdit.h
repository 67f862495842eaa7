// A change to a JSON text (RFC 8259) made in the layout that its user chose.
//
// People keep their configuration files in version control, and want to see the change there and
// nothing else.
//
// Pure functions; safe from any thread.
#pragma once

#include <string>
#include <string_view>

#include "Integrations/ConfigFileWriter.h"

namespace tallowbrook::host {

// A text with the members, numbers and escapes of `proposed` in the layout of `original`. What both
// have stays byte for byte; a line that stays changes by a comma at most. What is new is laid out
// like what stands beside it, else in the file's own indentation and line ends. Members and
// elements that were put behind the last one leave no trace when they are taken out again; an
// object or array that becomes empty is written without white space.
//
// Gives `proposed` where either text is no JSON, as with a file of white space alone.
std::string inLayoutOf(std::string_view original, std::string_view proposed);

// The plan with this as its proposed text, and the difference that it makes.
ConfigChangePlan proposing(ConfigChangePlan plan, std::string text);

// The plan with its proposed text in the layout of the original one. A plan that changes
// nothing, or creates a file, stays as it is.
ConfigChangePlan keepLayout(ConfigChangePlan plan);

}  // namespace tallowbrook::host
