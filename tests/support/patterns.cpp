#include "support/patterns.h"

#include <regex>

std::string regex_replaced(const std::string& text, const std::string& pattern, const std::string& with) {
    return std::regex_replace(text, std::regex(pattern), with);
}

std::string regex_replaced(const std::string& text, const std::string& pattern,
                           const std::function<std::string(const std::vector<std::string>&)>& with) {
    const std::regex regex(pattern);
    std::string all;
    auto from = text.begin();
    for (std::sregex_iterator match(from, text.end(), regex), end; match != end; from = (*match++)[0].second)
        all.append(from, (*match)[0].first) += with({match->begin(), match->end()});
    return all.append(from, text.end());
}
