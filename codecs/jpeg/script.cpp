// script.cpp - scan scripts: the usual ones, and those of users with every rule of ITU-T T.81, G.1.1 checked.
// SPDX-License-Identifier: BSD-2-Clause
#include "codecs/jpeg/script.h"

#include "codecs/jpeg/words.h"

#include <cstdlib>

namespace codecs::jpeg {

namespace {

// A scan of these components.
// Both kinds of table have the number of the component's colour.
Scan scanOf(const std::vector<int>& components, Model model, int first = 0, int last = 63, int high = 0, int low = 0) {
    Scan scan;
    for (int i : components) scan.components.push_back({i, isChroma(model, i), isChroma(model, i)});
    scan.first = first;
    scan.last = last;
    scan.high = high;
    scan.low = low;
    return scan;
}

// The components of a frame in groups, each of which may be interleaved.
std::vector<std::vector<int>> groupsOf(const Frame& frame) {
    std::vector<std::vector<int>> groups;
    const int n = int(frame.components.size());
    // An MCU of a scan has 10 blocks at the most (B.2.3); what does not fit goes component by component.
    if (frame.blocksInMcu() <= kMaxScanUnits) {
        groups.emplace_back();
        for (int i = 0; i < n; ++i) groups.back().push_back(i);
    } else {
        for (int i = 0; i < n; ++i) groups.push_back({i});
    }
    return groups;
}

// How many low bits to leave out of a first scan, so that `limit` bits hold the rest of a magnitude.
int bitsAbove(int limit, int magnitude) {
    int bits = 0;
    while (magnitude >> bits >= 1 << limit) ++bits;
    return bits;
}

// The script of most encoders, as far as the coefficients fit it.
class UsualScript {
public:
    explicit UsualScript(const CoefficientFile& f) : file(f) {}

    Script make() {
        int dcMax = 0, acMax = 0;
        file.blocks.eachVisible([&](int, const Zmx16s* b) {
            dcMax = std::max(dcMax, std::abs(int(b[0])));
            for (int k = 1; k < kBlock; ++k) acMax = std::max(acMax, std::abs(int(b[k])));
        });
        // 11 bits for the difference of two DC coefficients, 10 for an AC coefficient.
        const int dcLow = std::max(1, bitsAbove(11, 2 * dcMax)), acFit = bitsAbove(10, acMax);
        // Luma begins two bits up and chroma one, more only where a coefficient would have no category otherwise.
        const int plainLow = std::max(2, acFit), chromaLow = std::max(1, acFit);
        std::vector<int> plain, chroma;
        for (int i = 0; i < int(file.frame.components.size()); ++i)
            // Cr goes ahead of Cb, as most encoders have it.
            isChroma(file.model, i) ? void(chroma.insert(chroma.begin(), i)) : plain.push_back(i);

        // A rough picture first: DC, the lowest frequencies of luma, all of chroma; then what is left of luma, and bit by bit
        // what was left out.
        dc(0, dcLow);
        ac(plain, 1, 5, 0, plainLow);
        ac(chroma, 1, 63, 0, chromaLow);
        ac(plain, 6, 63, 0, plainLow);
        refine(plain, plainLow, 1);
        for (int bit = dcLow; bit > 0; --bit) dc(bit, bit - 1);
        refine(chroma, chromaLow, 0);
        refine(plain, 1, 0);
        return script;
    }

private:
    void dc(int high, int low) {
        for (const std::vector<int>& group : groupsOf(file.frame))
            script.push_back(scanOf(group, file.model, 0, 0, high, low));
    }
    void ac(const std::vector<int>& components, int first, int last, int high, int low) {
        for (int c : components) script.push_back(scanOf({c}, file.model, first, last, high, low));
    }
    void refine(const std::vector<int>& components, int from, int to) {
        for (int bit = from; bit > to; --bit) ac(components, 1, 63, bit, bit - 1);
    }

    const CoefficientFile& file;
    Script script;
};

// A script in words, checked as it is read: what it names, what a scan may be, and what scans may follow each other.
class Parser {
public:
    Parser(const std::string& t, const Frame& f, Model m) : words(t), frame(f), model(m), low(f.components.size()) {
        for (auto& component : low) component.fill(kUnseen);
    }

    Script parse() {
        Script script;
        while (!words.atEnd()) {
            ++number;
            script.push_back(scan());
            check(script.back());
        }
        // What no single scan can tell.
        if (script.empty()) throw Error("the scan script holds no scan");
        for (const Scan& s : script)
            if (isSequential(s) != isSequential(script[0]))
                throw Error("the scan script mixes sequential and progressive scans");
        for (std::size_t i = 0; i < low.size(); ++i)
            if (low[i][0] == kUnseen)
                throw Error("the scan script leaves out the DC coefficients of component " + std::to_string(i));
        return script;
    }

private:
    static constexpr int kUnseen = -1;

    [[noreturn]] void fault(const std::string& what) const {
        throw Error("scan script, scan " + std::to_string(number) + ": " + what);
    }

    // No number of a script comes near to a thousand: larger ones are as wrong as that.
    int integer(const char* what) {
        if (!words.atNumber()) fault(std::string(what) + " is missing");
        return words.number(1000);
    }

    // components [: first-last, upper, lower] ;
    Scan scan() {
        std::vector<int> components{integer("a component")};
        while (words.atNumber()) components.push_back(integer("a component"));
        for (std::size_t i = 0; i < components.size(); ++i) {
            if (components[i] >= int(frame.components.size()))
                fault("component " + std::to_string(components[i]) + "; the picture has " +
                      std::to_string(frame.components.size()));
            // The order of the frame header is that of a scan (B.2.3).
            if (i > 0 && components[i] <= components[i - 1]) fault("components out of order");
        }
        int band[4] = {0, 63, 0, 0};
        if (words.take(':')) {
            band[0] = integer("the first coefficient");
            if (!words.take('-')) fault("a hyphen is missing between the coefficients");
            band[1] = integer("the last coefficient");
            band[2] = integer("the upper bit");
            band[3] = integer("the lower bit");
        }
        if (!words.take(';') && !words.atEnd()) fault("a semicolon is missing behind it");
        return scanOf(components, model, band[0], band[1], band[2], band[3]);
    }

    // What any scan may be (B.2.3, G.1.1.1).
    void check(const Scan& s) {
        int units = 0;
        for (const ScanComponent& c : s.components)
            units += frame.components[std::size_t(c.index)].h * frame.components[std::size_t(c.index)].v;
        if (s.components.size() > 1 && units > kMaxScanUnits) fault("more than 10 blocks in an MCU");
        if (s.first > s.last || s.last > 63) fault("no band of coefficients");
        // Of a band from 0 to 63 none of the bits may be left out: that is a sequential scan. Else DC stands alone (G.1.1.1.1).
        if (s.first == 0 && s.last != 0 && s.last != 63) fault("DC and AC coefficients together");
        if (s.first > 0 && s.components.size() > 1) fault("AC coefficients of several components");
        // The lower bit is 0 to 13 (Table B.3), and a refinement is of one bit.
        if (s.low > 13 || (s.high != 0 && s.high != s.low + 1)) fault("bits that no scan can code");
        if (isSequential(s) && (s.high || s.low)) fault("a sequential scan of some of the bits");
        for (const ScanComponent& c : s.components) follow(s, low[std::size_t(c.index)]);
    }

    // A first scan of a coefficient has no upper bit, a refinement goes on from the bit that the last one has left.
    void follow(const Scan& s, std::array<int, kBlock>& bits) {
        if (s.first > 0 && bits[0] == kUnseen) fault("AC coefficients ahead of the DC coefficient");
        for (int k = s.first; k <= s.last; ++k) {
            int& bit = bits[std::size_t(k)];
            if (s.high == 0 && bit != kUnseen) fault("coefficient " + std::to_string(k) + " begins twice");
            if (s.high != 0 && bit != s.high) fault("coefficient " + std::to_string(k) + " is refined out of turn");
            bit = s.low;
        }
    }

    Words words;
    const Frame& frame;
    Model model;
    int number = 0;
    std::vector<std::array<int, kBlock>> low; // of each coefficient of each component: the lowest bit coded
};

} // namespace

Script sequentialScript(const Frame& frame, Model model) {
    Script script;
    for (const std::vector<int>& group : groupsOf(frame)) script.push_back(scanOf(group, model));
    return script;
}

Script usualScript(const CoefficientFile& file) { return UsualScript(file).make(); }

Script parseScript(const std::string& text, const Frame& frame, Model model) {
    return Parser(text, frame, model).parse();
}

Script scriptFor(const CoefficientFile& file, const std::string& text, bool progressive) {
    return !text.empty() ? parseScript(text, file.frame, file.model)
           : progressive ? usualScript(file)
                         : sequentialScript(file.frame, file.model);
}

} // namespace codecs::jpeg
