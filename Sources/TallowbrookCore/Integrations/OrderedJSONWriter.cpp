#include "Integrations/JSONEscapes.h"
#include "Integrations/OrderedJSON.h"
#include "Text/Hex.h"

namespace tallowbrook {
namespace {

// Appends to one text throughout: texts put together at every level would be copied at each.
class Writer {
 public:
    Writer(std::string_view indent, std::string& text) : indent_{indent}, text_{text} {}

    void write(const JSONNode& node, int level) {
        std::visit([&](const auto& payload) { write(payload, level); }, node.value);
    }

 private:
    void write(const JSONNode::Null&, int) { text_ += "null"; }
    void write(const JSONNode::Bool& node, int) { text_ += node.value ? "true" : "false"; }
    // Neither number nor raw text is interpreted: 1.50 stays 1.50.
    void write(const JSONNode::Number& node, int) { text_ += node.text; }
    void write(const JSONNode::String& node, int) { writeQuoted(node.value, node.rawText); }

    void write(const JSONNode::Array& node, int level) {
        writeItems('[', node.elements, ']', level,
                   [&](const JSONNode& element) { write(element, level + 1); });
    }

    void write(const JSONNode::Object& node, int level) {
        writeItems('{', node.members, '}', level, [&](const JSONMember& member) {
            writeQuoted(member.key, member.rawKey);
            text_ += ": ";
            write(member.value, level + 1);
        });
    }

    void writeItems(char open, const auto& items, char close, int level, auto writeItem) {
        text_ += open;
        bool isFirst = true;
        for (const auto& item : items) {
            text_ += isFirst ? "\n" : ",\n";
            isFirst = false;
            writeIndent(level + 1);
            writeItem(item);
        }
        if (!isFirst) {
            text_ += '\n';
            writeIndent(level);
        }
        text_ += close;
    }

    void writeQuoted(std::string_view value, const std::optional<std::string>& rawText) {
        text_ += '"';
        if (rawText)
            text_ += *rawText;
        else
            text_ += OrderedJSON::escape(value);
        text_ += '"';
    }

    void writeIndent(int level) {
        for (int i = 0; i < level; ++i) text_ += indent_;
    }

    std::string_view indent_;
    std::string& text_;
};

}  // namespace

std::string OrderedJSON::serialize(const JSONNode& node, std::string_view indent) {
    std::string text;
    Writer{indent, text}.write(node, 0);
    return text;
}

std::string OrderedJSON::escape(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        // A slash needs no escape, though one is read.
        if (const auto escape = escapeMeanings.find(c);
            c != '/' && escape != std::string_view::npos) {
            escaped += '\\';
            escaped += escapeLetters[escape];
        } else if (isControlCharacter(c)) {
            escaped += "\\u00";
            Hex::append(escaped, static_cast<std::uint8_t>(c), Hex::lowerDigits);
        } else {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace tallowbrook
