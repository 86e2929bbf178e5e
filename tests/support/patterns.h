// Regular expressions at one place: <regex> costs each source that reads it two seconds.
#pragma once

#include <functional>
#include <string>
#include <vector>

// The text with another in place of each match; "$1" in it is what the first group matched.
std::string regex_replaced(const std::string& text, const std::string& pattern, const std::string& with);
// The same, told for each match; it is given the match, then its groups, empty where they had no part in it.
std::string regex_replaced(const std::string& text, const std::string& pattern,
                           const std::function<std::string(const std::vector<std::string>&)>& with);
