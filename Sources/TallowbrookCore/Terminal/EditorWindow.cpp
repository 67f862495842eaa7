#include "Terminal/EditorWindow.h"

namespace tallowbrook {

std::optional<std::string> EditorWindow::openTarget() const {
    if (workspace) return workspace;
    // Opened by one of several folders, an editor would make a new window.
    if (folders.size() == 1) return folders.front();
    return std::nullopt;
}

std::string EditorWindowCoding::encode(const EditorWindow& window) {
    RecordEncoder encoder;
    encoder.encode("hostPid", window.hostPid);
    encoder.encode("appName", window.appName);
    encoder.encode("workspace", window.workspace);
    encoder.encode("folders", window.folders);
    encoder.encode("shellPids", window.shellPids);
    return encoder.text();
}

std::expected<EditorWindow, DecodingError> EditorWindowCoding::decode(std::string_view text) {
    auto parsed = RecordDecoder::parse(text);
    if (!parsed) return std::unexpected(parsed.error());
    RecordDecoder& decoder = *parsed;
    EditorWindow window{
        .hostPid = decoder.integer32("hostPid"),
        .appName = decoder.text("appName"),
        .workspace = decoder.optional("workspace", &RecordDecoder::text),
        .folders = decoder.texts("folders"),
        .shellPids = decoder.integers32("shellPids"),
    };
    if (decoder.failure()) return std::unexpected(*decoder.failure());
    return window;
}

}  // namespace tallowbrook
