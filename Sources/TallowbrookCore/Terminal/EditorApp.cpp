#include "Terminal/EditorApp.h"

#include <algorithm>

#include "System/DirectoryListing.h"

namespace tallowbrook {

namespace {

// Of ASCII letters alone: the id has no others.
std::string lowerCased(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

// Editors name the folder of an extension after its id, a dash and its version.
bool isExtensionFolder(const std::filesystem::path& folder) {
    const std::string name = lowerCased(folder.filename().string());
    if (!name.starts_with(EditorBridge::extensionID)) return false;
    // The dash keeps a longer id, of another extension, apart.
    return name.size() == EditorBridge::extensionID.size() ||
           name[EditorBridge::extensionID.size()] == '-';
}

}  // namespace

std::string EditorApp::extensionPageURL() const {
    return std::string{urlScheme}.append(":extension/").append(EditorBridge::extensionID);
}

bool EditorApp::hasExtension(const std::filesystem::path& home) const {
    return std::ranges::any_of(listDirectory(home / extensionsFolder), isExtensionFolder);
}

std::set<std::string_view> EditorBridge::bundleIdentifiers() {
    std::set<std::string_view> identifiers;
    for (const EditorApp& editor : editors) identifiers.insert(editor.bundleIdentifier);
    return identifiers;
}

}  // namespace tallowbrook
