#include "DiskModel.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "Support/FileContents.h"

namespace tallowbrook {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t root = 0;

std::pair<std::string, std::string> directoryAndName(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == path.npos) return {"", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

std::size_t hashOf(const PowerCut& cut) {
    std::size_t hash = cut.isAtTheEnd ? 1 : 0;
    const auto add = [&hash](const std::string& text) {
        hash = hash * 1'099'511'628'211U + std::hash<std::string>{}(text);
    };
    add(cut.printed);
    for (const auto& directory : cut.tree.directories) add(directory);
    for (const auto& [file, bytes] : cut.tree.files) {
        add(file);
        add(bytes);
    }
    return hash;
}

}  // namespace

bool DiskTree::leavesOut(std::string_view path) { return path.ends_with("-shm"); }

DiskTree DiskTree::of(const fs::path& directory) {
    DiskTree tree;
    for (const auto& entry : fs::recursive_directory_iterator{directory}) {
        const auto path = entry.path().lexically_relative(directory).string();
        if (leavesOut(path)) continue;
        if (entry.is_directory())
            tree.directories.insert(path);
        else
            tree.files.emplace(path, contentsOf(entry.path()));
    }
    return tree;
}

void DiskTree::writeTo(const fs::path& directory) const {
    // Parents come before their children.
    for (const auto& path : directories) {
        fs::create_directory(directory / path);
        permissions(directory / path, fs::perms{0700});
    }
    for (const auto& [path, bytes] : files) {
        writeContents(directory / path, bytes);
        permissions(directory / path, fs::perms{0600});
    }
}

DiskModel::DiskModel(const DiskTree& before) : now_{Node{.isDirectory = true}} {
    for (const auto& directory : before.directories) makeDirectory(directory);
    for (const auto& [file, bytes] : before.files) {
        create(file);
        append(file, bytes);
    }
    before_ = now_;
    operations_.clear();
}

bool DiskModel::create(const std::string& file) { return make(file, false); }

bool DiskModel::makeDirectory(const std::string& directory) { return make(directory, true); }

bool DiskModel::make(const std::string& path, bool isDirectory) {
    const auto [directory, name] = directoryAndName(path);
    const Inode parent = find(now_, directory);
    if (parent == nothing || has(path)) return false;
    const Inode made = now_.size();
    now_.push_back({.isDirectory = isDirectory});
    before_.push_back({.isDirectory = isDirectory});
    return add({.kind = Kind::names, .target = parent, .names = {{name, made}}});
}

bool DiskModel::remove(const std::string& path) {
    const auto [directory, name] = directoryAndName(path);
    if (!has(path)) return false;
    return add({.kind = Kind::names, .target = find(now_, directory), .names = {{name, nothing}}});
}

bool DiskModel::rename(const std::string& from, const std::string& to) {
    return changeNames(from, to, false);
}

bool DiskModel::exchange(const std::string& one, const std::string& other) {
    return has(other) && changeNames(one, other, true);
}

bool DiskModel::changeNames(const std::string& one, const std::string& other, bool isExchange) {
    const auto [directory, name] = directoryAndName(one);
    const auto [otherDirectory, otherName] = directoryAndName(other);
    if (!has(one) || directory != otherDirectory) return false;
    const Inode left = isExchange ? find(now_, other) : nothing;
    return add({.kind = Kind::names,
                .target = find(now_, directory),
                .names = {{name, left}, {otherName, find(now_, one)}}});
}

bool DiskModel::write(const std::string& file, std::size_t offset, std::string bytes) {
    return add({.kind = Kind::write,
                .target = find(now_, file),
                .offset = offset,
                .bytes = std::move(bytes)});
}

bool DiskModel::append(const std::string& file, std::string bytes) {
    const Inode target = find(now_, file);
    return target != nothing && write(file, now_[target].bytes.size(), std::move(bytes));
}

bool DiskModel::resize(const std::string& file, std::size_t size) {
    return add({.kind = Kind::resize, .target = find(now_, file), .offset = size});
}

bool DiskModel::flush(const std::string& path) {
    return add({.kind = Kind::flush, .target = find(now_, path)});
}

void DiskModel::print(std::string bytes) {
    add({.kind = Kind::print, .target = root, .bytes = std::move(bytes)});
}

bool DiskModel::has(const std::string& path) const { return find(now_, path) != nothing; }

DiskTree DiskModel::now() const { return treeOf(now_); }

bool DiskModel::add(Operation operation) {
    if (operation.target == nothing) return false;
    apply(now_, operation, Fate::kept);
    operations_.push_back(std::move(operation));
    return true;
}

DiskModel::Inode DiskModel::find(const Nodes& nodes, const std::string& path) {
    Inode inode = root;
    std::string_view rest = path;
    while (!rest.empty()) {
        const std::string name{rest.substr(0, rest.find('/'))};
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        const auto found = nodes[inode].entries.find(name);
        if (found == nodes[inode].entries.end()) return nothing;
        inode = found->second;
    }
    return inode;
}

void DiskModel::apply(Nodes& nodes, const Operation& operation, Fate fate) {
    if (fate == Fate::lost) return;
    Node& node = nodes[operation.target];
    switch (operation.kind) {
        case Kind::names:
            for (const auto& [name, inode] : operation.names) {
                if (inode == nothing)
                    node.entries.erase(name);
                else
                    node.entries[name] = inode;
            }
            break;
        case Kind::write: {
            const std::size_t length =
                fate == Fate::half ? operation.bytes.size() / 2 : operation.bytes.size();
            node.bytes.resize(std::max(node.bytes.size(), operation.offset + length));
            if (fate == Fate::zeros)
                node.bytes.replace(operation.offset, length, length, '\0');
            else
                node.bytes.replace(operation.offset, length, operation.bytes, 0, length);
            break;
        }
        case Kind::resize:
            node.bytes.resize(operation.offset);
            break;
        case Kind::flush:
        case Kind::print:
            break;
    }
}

DiskTree DiskModel::treeOf(const Nodes& nodes) {
    DiskTree tree;
    const std::function<void(Inode, const std::string&)> walk = [&](Inode directory,
                                                                    const std::string& prefix) {
        for (const auto& [name, inode] : nodes[directory].entries) {
            const std::string path = prefix + name;
            if (nodes[inode].isDirectory) {
                tree.directories.insert(path);
                walk(inode, path + "/");
            } else {
                tree.files.emplace(path, nodes[inode].bytes);
            }
        }
    };
    walk(root, "");
    return tree;
}

// The states of one disk.
class DiskModel::Cuts {
 public:
    Cuts(const DiskModel& disk, const std::function<void(const PowerCut&)>& look)
        : disk_{disk}, look_{look}, durable_{disk.before_}, fates_(disk.size(), Fate::kept) {}

    void all() {
        for (end_ = 0; end_ <= disk_.size(); ++end_) {
            settle();
            found("nothing");
            // Losing some of a row of writes is losing them before what follows the row.
            const bool isInARow = end_ < disk_.size() && isData(end_);
            if (!isInARow) loseSome();
            if (end_ < disk_.size() && operation(end_).kind == Kind::print)
                printed_ += operation(end_).bytes;
        }
    }

 private:
    const Operation& operation(std::size_t i) const { return disk_.operations_[i]; }
    bool isData(std::size_t i) const {
        return operation(i).kind == Kind::write || operation(i).kind == Kind::resize;
    }
    bool isNames(std::size_t i) const { return operation(i).kind == Kind::names; }

    // After the operations before the end: which of them are not on the disk for sure.
    void settle() {
        if (end_ == 0) return;
        const std::size_t last = end_ - 1;
        if (isData(last) || isNames(last)) pending_.push_back(last);
        if (operation(last).kind != Kind::flush) return;
        std::vector<std::size_t> rest;
        for (const std::size_t i : pending_) {
            if (operation(i).target == operation(last).target)
                apply(durable_, operation(i), Fate::kept);
            else
                rest.push_back(i);
        }
        pending_ = std::move(rest);
    }

    void found(const std::string& lost) {
        Nodes nodes = durable_;
        for (const std::size_t i : pending_) apply(nodes, operation(i), fates_[i]);
        const PowerCut cut{treeOf(nodes), printed_, end_ == disk_.size(),
                           "after " + std::to_string(end_) + " calls, lost: " + lost};
        if (seen_.insert(hashOf(cut)).second) look_(cut);
    }

    void foundWith(const std::string& lost, const std::function<Fate(std::size_t)>& fateOf) {
        for (const std::size_t i : pending_) fates_[i] = fateOf(i);
        found(lost);
        for (const std::size_t i : pending_) fates_[i] = Fate::kept;
    }

    void loseSome() {
        const auto lostIf = [](bool isLost) { return isLost ? Fate::lost : Fate::kept; };
        foundWith("all", [](std::size_t) { return Fate::lost; });
        foundWith("names", [&](std::size_t i) { return lostIf(isNames(i)); });
        foundWith("contents", [&](std::size_t i) { return lostIf(isData(i)); });
        for (const std::size_t chosen : pending_) {
            const auto target = operation(chosen).target;
            const auto text = [&](const char* what) { return what + std::to_string(chosen); };
            if (isNames(chosen)) {
                const auto isLater = [=, this](std::size_t i) {
                    return isNames(i) && operation(i).target == target && i >= chosen;
                };
                foundWith(text("names from "), [&](std::size_t i) { return lostIf(isLater(i)); });
                foundWith(text("contents, and names from "),
                          [&](std::size_t i) { return lostIf(isLater(i) || isData(i)); });
                continue;
            }
            foundWith(text("the file of "),
                      [&](std::size_t i) { return lostIf(operation(i).target == target); });
            foundWith(text("call "), [&](std::size_t i) { return lostIf(i == chosen); });
            foundWith(text("contents but those of "),
                      [&](std::size_t i) { return lostIf(isData(i) && i != chosen); });
            foundWith(text("the bytes of "),
                      [&](std::size_t i) { return i == chosen ? Fate::zeros : Fate::kept; });
            foundWith(text("half of "),
                      [&](std::size_t i) { return i == chosen ? Fate::half : Fate::kept; });
        }
    }

    const DiskModel& disk_;
    const std::function<void(const PowerCut&)>& look_;
    Nodes durable_;
    std::vector<std::size_t> pending_;
    Fates fates_;
    std::size_t end_ = 0;
    std::string printed_;
    std::unordered_set<std::size_t> seen_;
};

void DiskModel::forEachCut(const std::function<void(const PowerCut& cut)>& look) const {
    Cuts{*this, look}.all();
}

}  // namespace tallowbrook
