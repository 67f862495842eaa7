// Tells whether an object that is being read has a key already.
//
// A few keys are compared one by one, which is all that most objects need. Beyond that the members'
// places are hashed, so that an object of any size is read in linear time. Made for one object and
// one thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Integrations/JSONNode.h"

namespace tallowbrook {

class JSONKeySet {
 public:
    // The members may grow while the set is in use; none may be changed or removed.
    explicit JSONKeySet(const std::vector<JSONMember>& members) : members_{members} {}

    bool contains(std::string_view key) {
        constexpr std::size_t few = 16;
        if (members_.size() <= few)
            return std::ranges::find(members_, key, &JSONMember::key) != members_.end();
        while (hashed_ < members_.size()) places_.insert(hashed_++);
        return places_.find(key) != places_.end();
    }

 private:
    // Members move while the object grows, so the set knows them by their places.
    struct Hash {
        using is_transparent = void;
        const std::vector<JSONMember>& members;
        std::size_t operator()(std::string_view key) const {
            return std::hash<std::string_view>{}(key);
        }
        std::size_t operator()(std::size_t place) const { return (*this)(members[place].key); }
    };
    struct Equal {
        using is_transparent = void;
        const std::vector<JSONMember>& members;
        bool operator()(std::size_t one, std::size_t other) const { return one == other; }
        bool operator()(std::string_view key, std::size_t place) const {
            return members[place].key == key;
        }
        bool operator()(std::size_t place, std::string_view key) const {
            return members[place].key == key;
        }
    };

    const std::vector<JSONMember>& members_;
    std::size_t hashed_ = 0;
    std::unordered_set<std::size_t, Hash, Equal> places_{0, Hash{members_}, Equal{members_}};
};

}  // namespace tallowbrook
