// MGFile: matching text against masks.
//
//     mask  = [ piece ] *( 1*"*" [ piece ] )
//     piece = 1*( "?" / character other than "*" )
//
// Each piece takes its leftmost occurrence behind the piece before it; there is no backtracking. The last piece of a
// mask that doesn't end in "*" is tested against the end of the text on its own, so that "*.txt" finds a.txt.txt.
#include "runtime/mg_file.h"

#include <algorithm>

using namespace vorma;

namespace {

// mask up to the first invalid sequence: behind it nothing could be compared.
std::string valid_part(const std::string& mask) {
    size_t pos = 0, len = 0;
    while (MGFile::NextUtf8(mask, pos, len)) {
    }
    return mask.substr(0, pos + len);
}

std::vector<std::string> pieces_of(const std::string& mask) {
    std::vector<std::string> pieces;
    MGFile::SplitStringLeft(mask, "*", pieces);
    std::erase(pieces, std::string());
    return pieces;
}

// Whether piece stands at the beginning of text; matched is what it takes.
bool begins_with(const std::string& text, const std::string& piece, size_t& matched) {
    size_t pos = 0, len = 0;
    return MGFile::NextUtf8(text, pos, len) && MGFile::CompareMaskWithQuestion(text, pos, len, piece, matched);
}

// mask isn't empty and holds more than "*"; neither is text empty.
bool match_pieces(std::string text, const std::string& mask) {
    const std::vector<std::string> pieces = pieces_of(mask);
    for (size_t i = 0; i < pieces.size(); ++i) {
        const bool at_start = i == 0 && mask.front() != '*';
        const bool at_end = i + 1 == pieces.size() && mask.back() != '*';
        if (at_end && !at_start) return MGFile::MatchMaskWithEndStr(text, pieces[i]);
        size_t pos = 0, matched = 0;
        if (at_start ? !begins_with(text, pieces[i], matched)
                     : !MGFile::FindMaskWithQuestion(text, pieces[i], pos, matched))
            return false;
        text.erase(0, pos + matched);
        if (at_end) return text.empty();
    }
    return true;
}

} // namespace

bool MGFile::CompareMaskWithQuestion(const std::string& text, size_t pos, size_t len, const std::string& mask,
                                     size_t& matched) {
    bool in_text = true;
    for (size_t mask_pos = 0, mask_len = 0; NextUtf8(mask, mask_pos, mask_len);) {
        if (!in_text) return false;
        const bool any = mask[mask_pos] == '?';
        if (!any && mask.compare(mask_pos, mask_len, text, pos, len) != 0) return false;
        matched += len;
        in_text = NextUtf8(text, pos, len);
    }
    return true;
}

bool MGFile::FindMaskWithQuestion(const std::string& text, const std::string& mask, size_t& pos, size_t& matched) {
    for (size_t at = 0, len = 0; NextUtf8(text, at, len);) {
        size_t used = 0;
        if (!CompareMaskWithQuestion(text, at, len, mask, used)) continue;
        pos = at;
        matched = used;
        return true;
    }
    return false;
}

bool MGFile::MatchMaskWithEndStr(const std::string& text, const std::string& mask) {
    const size_t in_text = NumberUtf8(text), in_mask = NumberUtf8(mask);
    if (in_mask == 0 || in_mask > in_text) return false;
    size_t pos = 0, len = 0, matched = 0;
    for (size_t i = 0; i <= in_text - in_mask; ++i) NextUtf8(text, pos, len);
    return CompareMaskWithQuestion(text, pos, len, mask, matched);
}

bool MGFile::IsOnlyAsterisk(const std::string& mask) {
    return !mask.empty() && mask.find_first_not_of('*') == std::string::npos;
}

bool MGFile::CompareMaskUtf8(const std::string& text, const std::string& mask, bool case_sensitive) {
    return at_edge("MGFile::CompareMaskUtf8", [&] {
        const std::string valid = valid_part(mask);
        if (valid.empty()) return text.empty();
        if (IsOnlyAsterisk(valid)) return true;
        if (text.empty()) return false;
        return case_sensitive ? match_pieces(text, valid) : match_pieces(UpperUtf8(text), UpperUtf8(valid));
    });
}
