// MGFile: matching text against masks.
//
//     mask  = [ piece ] *( 1*"*" [ piece ] )
//     piece = 1*( "?" / character other than "*" )
//
// Each piece takes its leftmost occurrence behind the piece before it; there is no backtracking. The last piece of a
// mask that doesn't end in "*" is tested against the end of the text on its own, so that "*.txt" finds a.txt.txt.
// Pieces and what is left of the text are views: nothing is copied, and case is looked at where bytes differ.
#include "runtime/mg_file.h"
#include "runtime/utf8_walk.h"

#include <algorithm>

using namespace vorma;

namespace {

using View = std::string_view;

// The text up to its first invalid sequence.
View valid_part(View text) {
    size_t end = 0;
    while (const size_t length = character_at(text, end)) end += length;
    return text.substr(0, end);
}

size_t number_of_characters(View valid) {
    size_t number = 0;
    for (const char c : valid) number += (c & 0xC0) != 0x80;
    return number;
}

bool same_character(const char* a, const char* b, size_t length, bool case_sensitive) {
    if (length <= 2 && !case_sensitive) return in_case(a, length, true) == in_case(b, length, true);
    for (size_t i = 0; i < length; ++i)
        if (a[i] != b[i]) return false;
    return true;
}

// Whether piece, all of it valid, stands at the beginning of text; matched grows by the bytes of text used.
bool begins_with(View text, View piece, bool case_sensitive, size_t& matched) {
    for (size_t at = 0, in_text = 0; at < piece.size(); matched += in_text) {
        const size_t length = character_length(static_cast<unsigned char>(piece[at]));
        const bool any = piece[at] == '?';
        in_text = character_at(text, 0);
        if (in_text == 0 || (!any && in_text != length)) return false;
        if (!any && !same_character(text.data(), piece.data() + at, length, case_sensitive)) return false;
        text.remove_prefix(in_text);
        at += length;
    }
    return true;
}

// The leftmost place where piece stands in text: its position and the bytes matched.
bool find_piece(View text, View piece, bool case_sensitive, size_t& pos, size_t& matched) {
    for (size_t at = 0; const size_t length = character_at(text, at); at += length) {
        size_t used = 0;
        if (!begins_with(text.substr(at), piece, case_sensitive, used)) continue;
        pos = at;
        matched = used;
        return true;
    }
    return false;
}

// Whether the last characters of text match piece, neither of which is empty.
bool ends_with(View text, View piece, bool case_sensitive) {
    text = valid_part(text);
    const size_t wanted = number_of_characters(piece);
    size_t begin = text.size(), number = 0;
    while (begin > 0 && number < wanted) number += (text[--begin] & 0xC0) != 0x80;
    size_t matched = 0;
    return number == wanted && begins_with(text.substr(begin), piece, case_sensitive, matched);
}

// mask is valid and holds more than "*".
bool match_pieces(View text, View mask, bool case_sensitive) {
    bool at_start = mask.front() != '*';
    while (true) {
        mask.remove_prefix(std::min(mask.find_first_not_of('*'), mask.size()));
        if (mask.empty()) return true;
        const View piece = mask.substr(0, mask.find('*'));
        const bool last = piece.size() == mask.size();
        if (last && !at_start) return ends_with(text, piece, case_sensitive);
        size_t pos = 0, matched = 0;
        if (at_start ? !begins_with(text, piece, case_sensitive, matched)
                     : !find_piece(text, piece, case_sensitive, pos, matched))
            return false;
        text.remove_prefix(pos + matched);
        if (last) return text.empty();
        mask.remove_prefix(piece.size());
        at_start = false;
    }
}

} // namespace

bool MGFile::CompareMaskWithQuestion(const std::string& text, size_t pos, size_t, const std::string& mask,
                                     size_t& matched) {
    return begins_with(View(text).substr(std::min(pos, text.size())), valid_part(mask), true, matched);
}

bool MGFile::FindMaskWithQuestion(const std::string& text, const std::string& mask, size_t& pos, size_t& matched) {
    return find_piece(text, valid_part(mask), true, pos, matched);
}

bool MGFile::MatchMaskWithEndStr(const std::string& text, const std::string& mask) {
    const View valid = valid_part(mask);
    return !valid.empty() && ends_with(text, valid, true);
}

bool MGFile::IsOnlyAsterisk(const std::string& mask) {
    return !mask.empty() && mask.find_first_not_of('*') == std::string::npos;
}

bool MGFile::CompareMaskUtf8(const std::string& text, const std::string& mask, bool case_sensitive) {
    const View valid = valid_part(mask);
    if (valid.empty()) return text.empty();
    if (valid.find_first_not_of('*') == View::npos) return true;
    return !text.empty() && match_pieces(text, valid, case_sensitive);
}
