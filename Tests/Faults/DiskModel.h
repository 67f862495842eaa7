// A disk that loses its power: which states it may be found in afterwards.
//
// A write reaches the disk at the latest with the next flush of its file, a change of names with
// the next flush of their directory; until then it may be there or not. Beyond that the model
// relies on what journaling file systems keep: the names of one directory change in the order of
// the calls, and a rename within a directory happens as a whole. Writes keep no order.
//
// Paths are relative to the directory that is watched.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tallowbrook {

// Files with their contents, and directories. Left out is the memory that the processes of a
// database share: a machine that starts anew makes it anew.
struct DiskTree {
    std::map<std::string, std::string> files;
    std::set<std::string> directories;
    bool operator==(const DiskTree&) const = default;

    static bool leavesOut(std::string_view path);
    static DiskTree of(const std::filesystem::path& directory);

    // Owner-only, and over what lies there already.
    void writeTo(const std::filesystem::path& directory) const;

    bool has(const std::string& file) const { return files.contains(file); }
};

// One way in which a disk may be found.
struct PowerCut {
    DiskTree tree;
    std::string printed;      // what the program had said until then
    bool isAtTheEnd = false;  // it had ended before
    std::string text;         // when it was, and what is lost
};

class DiskModel {
 public:
    // All of it is on the disk.
    explicit DiskModel(const DiskTree& before);

    // What a program does, call by call. False for a path that is not there, or one that is in
    // the way.
    bool create(const std::string& file);
    bool makeDirectory(const std::string& directory);
    bool remove(const std::string& path);
    bool rename(const std::string& from, const std::string& to);      // in one directory
    bool exchange(const std::string& one, const std::string& other);  // in one directory
    bool write(const std::string& file, std::size_t offset, std::string bytes);
    bool append(const std::string& file, std::string bytes);
    bool resize(const std::string& file, std::size_t size);
    bool flush(const std::string& path);
    void print(std::string bytes);

    bool has(const std::string& path) const;

    // With nothing lost.
    DiskTree now() const;

    // Every state once: after each call with all that was done; and before each call but a write,
    // and at the end, also without what was not flushed: all of it, the names, the contents, the
    // latest names of a directory, the contents of a file, one write, all writes but one; and with
    // one write as zeros, or only its first half.
    void forEachCut(const std::function<void(const PowerCut& cut)>& look) const;

    std::size_t size() const { return operations_.size(); }

 private:
    using Inode = std::size_t;
    static constexpr Inode nothing = static_cast<Inode>(-1);

    struct Node {
        bool isDirectory = false;
        std::string bytes = {};
        std::map<std::string, Inode> entries = {};
    };
    using Nodes = std::vector<Node>;

    enum class Kind { names, write, resize, flush, print };
    struct Operation {
        Kind kind = Kind::names;
        Inode target = nothing;                   // the file, or the directory of the names
        std::map<std::string, Inode> names = {};  // what each becomes
        std::size_t offset = 0;                   // the size, where it is resized
        std::string bytes = {};
    };

    enum class Fate { kept, lost, zeros, half };
    using Fates = std::vector<Fate>;
    class Cuts;

    static Inode find(const Nodes& nodes, const std::string& path);
    static void apply(Nodes& nodes, const Operation& operation, Fate fate);
    static DiskTree treeOf(const Nodes& nodes);
    bool add(Operation operation);
    bool make(const std::string& path, bool isDirectory);
    bool changeNames(const std::string& one, const std::string& other, bool isExchange);

    Nodes before_;  // and, empty, what is made later
    Nodes now_;
    std::vector<Operation> operations_;
};

}  // namespace tallowbrook
