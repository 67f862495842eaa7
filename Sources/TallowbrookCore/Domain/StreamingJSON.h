// The base of handlers for Boost.JSON's streaming parser, and one call that runs such a handler
// over a whole text (RFC 8259).
//
// Included by the sources that parse, never by a public header.
#pragma once

#include <boost/json/basic_parser_impl.hpp>
#include <cstddef>
#include <string>
#include <string_view>

namespace tallowbrook {

// Answers every event of the parser with "go on"; a handler hides those it cares about.
struct StreamingJSONHandler {
    using ErrorCode = boost::json::error_code;

    static constexpr std::size_t max_object_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_array_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_key_size = static_cast<std::size_t>(-1);
    static constexpr std::size_t max_string_size = static_cast<std::size_t>(-1);

    bool on_document_begin(ErrorCode&) { return true; }
    bool on_document_end(ErrorCode&) { return true; }
    bool on_object_begin(ErrorCode&) { return true; }
    bool on_object_end(std::size_t, ErrorCode&) { return true; }
    bool on_array_begin(ErrorCode&) { return true; }
    bool on_array_end(std::size_t, ErrorCode&) { return true; }
    bool on_key_part(std::string_view, std::size_t, ErrorCode&) { return true; }
    bool on_key(std::string_view, std::size_t, ErrorCode&) { return true; }
    bool on_string_part(std::string_view, std::size_t, ErrorCode&) { return true; }
    bool on_string(std::string_view, std::size_t, ErrorCode&) { return true; }
    bool on_number_part(std::string_view, ErrorCode&) { return true; }
    bool on_int64(std::int64_t, std::string_view, ErrorCode&) { return true; }
    bool on_uint64(std::uint64_t, std::string_view, ErrorCode&) { return true; }
    bool on_double(double, std::string_view, ErrorCode&) { return true; }
    bool on_bool(bool, ErrorCode&) { return true; }
    bool on_null(ErrorCode&) { return true; }
    bool on_comment_part(std::string_view, ErrorCode&) { return true; }
    bool on_comment(std::string_view, ErrorCode&) { return true; }

    // Ends the parse as a failure.
    static bool refuse(ErrorCode& error) {
        error = boost::json::error::syntax;
        return false;
    }
};

// A text that the parser hands over in parts. Only a text that arrives in several parts is copied.
class PartedText {
 public:
    void add(std::string_view part) { parts_.append(part); }

    // The whole text, valid until the next call of `add` or `finish`.
    std::string_view finish(std::string_view lastPart) {
        if (parts_.empty()) return lastPart;
        whole_ = std::move(parts_);
        whole_.append(lastPart);
        parts_.clear();
        return whole_;
    }

 private:
    std::string parts_;
    std::string whole_;
};

// Whether `text` is one whole JSON document that `parser`'s handler did not refuse.
template <typename Handler>
bool parseWhole(boost::json::basic_parser<Handler>& parser, std::string_view text) {
    boost::json::error_code error;
    const std::size_t consumed = parser.write_some(false, text.data(), text.size(), error);
    return !error && consumed == text.size();
}

}  // namespace tallowbrook
