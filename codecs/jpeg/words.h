// words.h - texts of numbers and signs, as scripts and tables are: blanks, commas and comments from # to the end of the
// line stand between them and mean nothing.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <algorithm>
#include <string>

namespace codecs::jpeg {

class Words {
public:
    explicit Words(const std::string& t) : text(t) { skip(); }

    bool atEnd() const { return at == text.size(); }
    bool atNumber() const { return !atEnd() && text[at] >= '0' && text[at] <= '9'; }
    // The number that stands here, or `most` where it is larger.
    int number(int most) {
        int v = 0;
        for (; atNumber(); ++at) v = std::min(most, 10 * v + text[at] - '0');
        skip();
        return v;
    }
    // Passes over a sign if it is the next one.
    bool take(char sign) {
        if (atEnd() || text[at] != sign) return false;
        ++at;
        skip();
        return true;
    }

private:
    void skip() {
        while (!atEnd())
            if (text[at] == '#')
                at = std::min(text.find('\n', at), text.size());
            else if (std::string(" \t\r\n,").find(text[at]) != std::string::npos)
                ++at;
            else
                return;
    }

    const std::string& text;
    std::size_t at = 0;
};

} // namespace codecs::jpeg
