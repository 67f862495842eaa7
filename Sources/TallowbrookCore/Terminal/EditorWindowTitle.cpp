#include "Terminal/EditorWindowTitle.h"

#include <algorithm>

namespace tallowbrook {

namespace {

// Editors put one or the other between the file, the folder and their own name.
constexpr std::string_view emDash = " — ";
constexpr std::string_view hyphen = " - ";

std::filesystem::path standardized(const std::filesystem::path& path) {
    const auto normal = path.lexically_normal();
    // A slash at the end would hide the last name.
    return normal.has_filename() ? normal : normal.parent_path();
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
    std::vector<std::string_view> parts;
    for (auto at = text.find(separator); at != text.npos; at = text.find(separator)) {
        parts.push_back(text.substr(0, at));
        text.remove_prefix(at + separator.size());
    }
    parts.push_back(text);
    return parts;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const auto first = text.find_first_not_of(blanks);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

std::vector<std::string> EditorWindowTitle::candidateNames(const std::filesystem::path& folder,
                                                           const Home& home) {
    if (!folder.is_absolute()) return {};
    const auto last = home ? standardized(*home) : std::filesystem::path{};
    std::vector<std::string> names;
    auto current = standardized(folder);
    do {
        if (current.has_filename()) names.push_back(current.filename().string());
        current = current.parent_path();
    } while (current.has_filename() && current != last);
    return names;
}

bool EditorWindowTitle::matches(std::string_view title, std::string_view name) {
    if (name.empty()) return false;
    // A folder's own name may hold a dash.
    if (title == name) return true;
    for (const auto piece : split(title, emDash))
        for (const auto part : split(piece, hyphen))
            if (trimmed(part) == name) return true;
    return false;
}

std::optional<std::string> EditorWindowTitle::bestMatch(const std::vector<std::string>& titles,
                                                        const std::filesystem::path& folder,
                                                        const Home& home) {
    // Names before titles: a window of the folder itself wins over one of its parent.
    for (const std::string& name : candidateNames(folder, home)) {
        const auto found = std::ranges::find_if(
            titles, [&](const std::string& title) { return matches(title, name); });
        if (found != titles.end()) return *found;
    }
    return std::nullopt;
}

}  // namespace tallowbrook
