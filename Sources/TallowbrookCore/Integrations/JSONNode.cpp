#include "Integrations/JSONNode.h"

#include <algorithm>
#include <utility>

namespace tallowbrook {
namespace {

template <typename Payload>
auto* payload(auto& node) {
    return std::get_if<Payload>(&node.value);
}

}  // namespace

// Written out, since the compiler of the macOS build breaks on ones that are defaulted here.
bool JSONNode::Object::operator==(const Object& other) const { return members == other.members; }
bool JSONNode::Array::operator==(const Array& other) const { return elements == other.elements; }

JSONNode JSONNode::object(std::vector<JSONMember> members) { return {Object{std::move(members)}}; }
JSONNode JSONNode::array(std::vector<JSONNode> elements) { return {Array{std::move(elements)}}; }
JSONNode JSONNode::string(std::string value) { return {String{std::move(value), std::nullopt}}; }
JSONNode JSONNode::number(std::string text) { return {Number{std::move(text)}}; }
JSONNode JSONNode::bool_(bool value) { return {Bool{value}}; }
JSONNode JSONNode::null() { return {Null{}}; }

const std::vector<JSONMember>* JSONNode::objectMembers() const {
    const auto* object = payload<Object>(*this);
    return object ? &object->members : nullptr;
}

std::vector<JSONMember>* JSONNode::objectMembers() {
    auto* object = payload<Object>(*this);
    return object ? &object->members : nullptr;
}

const std::vector<JSONNode>* JSONNode::arrayElements() const {
    const auto* array = payload<Array>(*this);
    return array ? &array->elements : nullptr;
}

std::vector<JSONNode>* JSONNode::arrayElements() {
    auto* array = payload<Array>(*this);
    return array ? &array->elements : nullptr;
}

const std::string* JSONNode::stringValue() const {
    const auto* string = payload<String>(*this);
    return string ? &string->value : nullptr;
}

const JSONNode* value(const std::vector<JSONMember>& members, std::string_view key) {
    const auto member = std::ranges::find(members, key, &JSONMember::key);
    return member == members.end() ? nullptr : &member->value;
}

JSONNode* value(std::vector<JSONMember>& members, std::string_view key) {
    return const_cast<JSONNode*>(value(std::as_const(members), key));
}

}  // namespace tallowbrook
