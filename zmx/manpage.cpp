// manpage.cpp - a manual page a command, in the few macros of man(7) that groff and mandoc both know.
//
// Every page has the same sections in the order of man-pages(7), so that a reader finds his way in all who knows one.
// SPDX-License-Identifier: BSD-2-Clause
#include "zmx/manual.h"
#include "zmxj_version.h"

namespace command {
namespace {

// That of the last release, not of the build: the same sources make the same page.
constexpr const char* kDate = "2026-11-22";

// A backslash, a dot or an apostrophe at the begin of a line would be read as a command. Dashes of options stay ASCII,
// so that they can be copied.
std::string roff(const std::string& text) {
    std::string out;
    for (char c : text) {
        if (out.empty() && (c == '.' || c == '\'')) out += "\\&";
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else
            out += c;
    }
    return out;
}

std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
std::string section(const char* name) { return std::string(".SH ") + name + "\n"; }
// An item of a list: what it is about, then what is to be said of it.
std::string item(const std::string& head, const std::string& text) { return ".TP\n" + head + "\n" + text + "\n"; }
// Lines that stand as they are.
std::string literal(const std::string& lines) { return ".nf\n" + lines + ".fi\n"; }

// What is typed as it stands is bold, what is to be replaced is in italics: man-pages(7) wants it so.
std::string heads(const Option& option) {
    if (option.names.empty()) return "\\fI" + roff(option.value) + "\\fR";
    std::string all;
    for (const std::string& name : option.names) all += (all.empty() ? "" : ", ") + bold(name);
    return option.value.empty() ? all : all + " \\fI" + roff(option.value) + "\\fR";
}

// Operands ahead of the options, as in help.
std::string optionsOf(const Command& c) {
    std::string text;
    for (const Option& operand : c.operands) text += item(heads(operand), roff(operand.sentence()) + ".");
    for (const Option& option : c.options) text += item(heads(option), roff(option.sentence()) + ".");
    return text.empty() ? "" : section("OPTIONS") + text;
}

// Each with the page that has the rest.
std::string commandsOf(const Command& c) {
    if (c.commands.empty()) return "";
    std::string text = section("COMMANDS");
    for (const Command& child : c.commands)
        text += item(bold(child.name(" ")), roff(child.text) + "; see " + bold(child.name("-")) + "(1).");
    return text;
}

// Not filled: a command line that is broken elsewhere cannot be copied.
std::string examplesOf(const Command& c) {
    std::string lines;
    for (const std::string& example : c.examples) lines += roff(example) + "\n";
    return section("EXAMPLES") + literal(lines);
}

// What holds for all commands stands in the page of each: a reader of one need not know that there are others.
std::string mannersText(const Command& c) {
    std::string text;
    // Only of commands that make files.
    for (const Option& option : c.options)
        if (option.names.back() == "--output")
            text += section("FILES") + "A file is written beside its place, under a name that begins with\n"
                                       ".IR .zmx\\- ,\n"
                                       "and takes its place when it is whole. When the work fails or is interrupted,\n"
                                       "what stood there before stays.\n"
                                       ".PP\n"
                                       "Formats that go back to what they have written wait in a nameless file\n"
                                       "in the folder that\n"
                                       ".B TMPDIR\n"
                                       "names when they are written to a pipe.\n";
    return text + section("EXIT STATUS") + item("0", "All is done.") +
           item("1", "A file could not be read or written, or is not sound. Of several files the others are done.") +
           item("2", "The command line asks for what there is not, or for nonsense; nothing was written.") +
           ".PP\nA signal that interrupts the command ends it as the signal always does.\n";
}

// Up to the whole, and across to the commands beside it.
std::string seeAlso(const Command& c) {
    std::vector<std::string> pages;
    std::vector<std::string> above = c.words;
    while (above.size() > 1) {
        above.pop_back();
        pages.push_back(joined(above, "-"));
    }
    for (const Command& child : c.commands) pages.push_back(child.name("-"));
    std::string text;
    for (const std::string& page : pages) text += (text.empty() ? "" : ",\n") + bold(page) + "(1)";
    return section("SEE ALSO") + text + "\n";
}

// The title is in capitals, by custom.
std::string upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = char(c - 'a' + 'A');
    return text;
}

} // namespace

std::string manualPage(const Command& c) {
    const std::string name = c.name("-");
    std::string text = ".\\\" Made by zmx manual from its table of options.\n";
    text += ".TH " + roff(upper(name)) + " 1 \"" + kDate + "\" \"libzmxjpx " + ZMXJ_VERSION_STRING + "\" \"zmx\"\n";
    // This line is what whatis(1) and apropos(1) show.
    text += section("NAME") + roff(name) + " \\- " + roff(c.text) + "\n";
    text += section("SYNOPSIS") + bold(c.name(" ")) + roff(c.usage.substr(c.name(" ").size())) + "\n";
    text += section("DESCRIPTION") + roff(c.text) + ".\n";
    return text + commandsOf(c) + optionsOf(c) + mannersText(c) + examplesOf(c) + seeAlso(c);
}

} // namespace command
