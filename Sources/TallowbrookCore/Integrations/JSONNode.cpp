#include "Integrations/JSONNode.h"

#include <algorithm>
#include <utility>

namespace tallowbrook {

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
    const auto* object = std::get_if<Object>(&value);
    return object ? &object->members : nullptr;
}

// Each pair of accessors is written once, for the constant node: the cast gives back only what the
// caller had anyway.
std::vector<JSONMember>* JSONNode::objectMembers() {
    return const_cast<std::vector<JSONMember>*>(std::as_const(*this).objectMembers());
}

const std::vector<JSONNode>* JSONNode::arrayElements() const {
    const auto* array = std::get_if<Array>(&value);
    return array ? &array->elements : nullptr;
}

std::vector<JSONNode>* JSONNode::arrayElements() {
    return const_cast<std::vector<JSONNode>*>(std::as_const(*this).arrayElements());
}

const std::string* JSONNode::stringValue() const {
    const auto* string = std::get_if<String>(&value);
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
