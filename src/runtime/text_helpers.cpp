// MGFile: trimming, splitting and searching of text, byte by byte.
#include "runtime/mg_file.h"

#include <algorithm>
#include <cstring>
#include <string_view>

using namespace vorma;

namespace {

constexpr const char* blanks = " \t\n\r";

// The next occurrence of what from `from` on; with escape one that no backslash precedes.
size_t find_unescaped(const std::string& text, const std::string& what, size_t from, bool escape) {
    size_t found = text.find(what, from);
    while (escape && found != std::string::npos && found > 0 && text[found - 1] == '\\')
        found = text.find(what, found + 1);
    return found;
}

} // namespace

void MGFile::TrancatedLeft(std::string& text) {
    at_edge("MGFile::TrancatedLeft", [&] { text.erase(0, text.find_first_not_of(blanks)); });
}

void MGFile::TrancatedRight(std::string& text) {
    at_edge("MGFile::TrancatedRight", [&] { text.erase(text.find_last_not_of(blanks) + 1); });
}

void MGFile::TrancatedAll(std::string& text) {
    TrancatedRight(text);
    TrancatedLeft(text);
}

void MGFile::SplitStringLeft(std::string text, const char* sep, std::vector<std::string>& parts) {
    at_edge("MGFile::SplitStringLeft", [&] {
        const std::string separator(sep ? sep : ""); // of its own: the given one may stand in parts
        parts.clear();
        if (separator.empty() || text.empty()) return;
        size_t start = 0;
        for (size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + separator.size())
            parts.push_back(text.substr(start, end - start));
        parts.push_back(text.substr(start));
    });
}

void MGFile::SplitStringRight(std::string text, const char* sep, std::vector<std::string>& parts) {
    at_edge("MGFile::SplitStringRight", [&] {
        const std::string separator(sep ? sep : ""); // of its own: the given one may stand in parts
        parts.clear();
        if (separator.empty()) return;
        for (size_t start; (start = text.rfind(separator)) != std::string::npos; text.resize(start))
            parts.push_back(text.substr(start + separator.size()));
        if (!text.empty()) parts.push_back(text);
    });
}

void MGFile::SplitLowerStringLeft(const std::string& text, const char* sep, std::vector<std::string>& parts) {
    SplitStringLeft(LowerUtf8(text), sep, parts);
}

void MGFile::SplitLowerStringRight(const std::string& text, const char* sep, std::vector<std::string>& parts) {
    SplitStringRight(LowerUtf8(text), sep, parts);
}

bool MGFile::IsEmptyString(const char* text) {
    return !text || text[std::strspn(text, blanks)] == '\0';
}

bool MGFile::StringIsEmpty(const std::string& text) {
    return IsEmptyString(text.c_str());
}

bool MGFile::IsAnsiString(const char* text) {
    const std::string_view bytes = text ? text : "";
    return std::none_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) != 0; });
}

std::string MGFile::DelAllSimbolsFromString(std::string text, char c) {
    std::erase(text, c);
    return text;
}

std::string MGFile::InsertSepToString(const std::string& text, const char* sep, size_t n) {
    return at_edge("MGFile::InsertSepToString", [&] {
        std::string joined;
        for (size_t pos = 0; pos < text.size(); pos += n) {
            if (pos > 0) joined += sep;
            joined.append(text, pos, n);
        }
        return joined;
    });
}

bool MGFile::StrReplaceSrcOnDstLeft(std::string& text, std::string src, std::string dst) {
    return at_edge("MGFile::StrReplaceSrcOnDstLeft", [&] {
        const size_t pos = text.find(src);
        if (pos == std::string::npos) return false;
        text.replace(pos, src.size(), dst);
        return true;
    });
}

bool MGFile::SplitSubStringLeft(std::string text, std::string sep, std::string& left, std::string& right) {
    return at_edge("MGFile::SplitSubStringLeft", [&] {
        left.clear();
        right.clear();
        const size_t pos = text.find(sep);
        if (text.empty() || pos == std::string::npos) return false;
        left = text.substr(0, pos);
        right = text.substr(pos + sep.size());
        TrancatedAll(left);
        TrancatedAll(right);
        return true;
    });
}

bool MGFile::FindNextLine(const std::string& text, size_t& pos, std::string& line) {
    return at_edge("MGFile::FindNextLine", [&] {
        line.clear();
        if (pos >= text.size()) return false;
        const size_t feed = text.find('\n', pos);
        const bool ended = feed != std::string::npos;
        line = text.substr(pos, ended ? feed - pos : feed);
        if (ended && line.ends_with('\r')) line.pop_back();
        pos = ended ? feed + 1 : text.size();
        return true;
    });
}

void MGFile::SplitBlockOnSubStrings(std::string text, std::vector<std::string>& lines, bool stop_on_blank) {
    at_edge("MGFile::SplitBlockOnSubStrings", [&] {
        lines.clear();
        size_t start = 0;
        for (size_t feed; (feed = text.find('\n', start)) != std::string::npos; start = feed + 1) {
            std::string line = text.substr(start, feed - start);
            TrancatedAll(line);
            if (stop_on_blank && line.empty()) return;
            lines.push_back(std::move(line));
        }
    });
}

bool MGFile::GetInfoBlockFromEnd(std::string& text, std::string sep, std::string& header, std::string& block) {
    return at_edge("MGFile::GetInfoBlockFromEnd", [&] {
        header.clear();
        block.clear();
        const size_t start = text.rfind(sep);
        if (text.empty() || start == std::string::npos) return false;
        const std::string tail = text.substr(start + sep.size());
        const size_t feed = tail.find('\n');
        if (feed != std::string::npos) {
            header = tail.substr(0, feed);
            TrancatedAll(header);
            block = tail.substr(feed + 1);
        }
        text.resize(start);
        return true;
    });
}

bool MGFile::FindSubString(const std::string& text, size_t& pos, std::string begin, std::string end, std::string& out,
                           bool escape) {
    return at_edge("MGFile::FindSubString", [&] {
        out.clear();
        // The next end and the next line feed are looked for again only once the search has passed them.
        size_t closed = find_unescaped(text, end, pos, escape), feed = text.find('\n', pos), from = pos;
        while (true) {
            const size_t opened = find_unescaped(text, begin, from, escape);
            if (opened == std::string::npos) return false;
            const size_t inner = opened + begin.size();
            if (closed < inner) closed = find_unescaped(text, end, inner, escape);
            if (closed == std::string::npos) return false;
            if (feed < inner) feed = text.find('\n', inner);
            if (feed >= closed) {
                out = text.substr(inner, closed - inner);
                pos = closed + end.size();
                return true;
            }
            from = std::max(inner, opened + 1); // on, even with an empty begin
        }
    });
}
