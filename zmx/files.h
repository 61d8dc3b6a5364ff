// files.h - what the subcommands share about files: which ones, the options that all have, and the work on each.
#pragma once

#include "codecs/picture/error.h"

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace command {

// A command line that asks for nonsense: main() ends with 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
// Trouble that has been printed already: main() ends with 1.
struct ToldError : codecs::Error {
    using Error::Error;
};

// Options of every subcommand.
struct Manners {
    bool quiet = false, verbose = false, strict = false;
    int threads = 0; // 0: as many as the processors allow

    void addTo(CLI::App& c);
    // "zmx: FILE: warning: TEXT" for each; with --strict the first is thrown instead.
    void warn(const std::string& file, const std::vector<std::string>& texts) const;
};

// One file in and one out; "-" is standard input or output.
struct Job {
    std::string in, out;
};

class Run;

// The files of a subcommand that makes a file of another one:
//   IN OUT           one into the other; OUT may be a folder
//   IN... FOLDER     each into a file of the folder
//   IN... -o OUT     the same; without -o and OUT, --suffix puts each beside its IN
class Files {
public:
    Manners manners;
    // Adds the files to a subcommand, and the options that all have. `ending` is that of the files that are made,
    // ".jpg"; what it points to may change until each() is called.
    void addTo(CLI::App& c, const std::string& in, const std::string& out, std::string ending);
    void setEnding(std::string text) { ending = std::move(text); }

    // Calls `work` on each pair of files, then keeps what it wrote. With several, one that fails does not end the others.
    void each(const std::function<void(Run&)>& work) const;

private:
    std::vector<Job> jobs() const;
    std::string outOf(const std::string& in, const std::string& folder) const;
    void workOn(const Job& job, const std::function<void(Run&)>& work) const;

    std::vector<std::string> paths;
    std::string out, suffix, ending;
    bool force = false;
};

} // namespace command
