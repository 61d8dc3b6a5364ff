// files.h - which files a subcommand works on, and the work on each of them.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "zmx/run.h"

#include <functional>
#include <memory>

namespace command {

// The files of a subcommand that makes a file of another one:
//   IN OUT           one into the other; OUT may be a folder
//   IN... FOLDER     each into a file of the folder
//   IN... -o OUT     the same; without -o and OUT, --suffix puts each beside its IN
class Files {
public:
    Manners manners;

    // Adds the files to a subcommand, and the options that all have. `in` and `out` say what they are; `ending` is that of
    // the files that are made, like ".jpg", where no name says it.
    void addTo(CLI::App& c, const std::string& in, const std::string& out, std::string ending);
    // The same where --to may say another one.
    void addTo(CLI::App& c, const std::string& in, const std::string& out, const PictureOptions& picture);

    // Calls `work` on each pair of files, then keeps what it wrote. With several, one that fails does not end the others.
    void each(const std::function<void(Run&)>& work) const;

private:
    std::vector<Job> jobs() const;
    std::string outOf(const std::string& in, const std::string& folder) const;
    void workOn(const Job& job, const std::function<void(Run&)>& work) const;

    std::vector<std::string> paths;
    std::string out, suffix, ending;
    const PictureOptions* picture = nullptr; // beside this one
    bool force = false;
};

// Lets a subcommand call `work` for each of the pairs of files in its arguments.
template <class App, class Arguments, class Work>
void workOnEach(App& c, const std::shared_ptr<Arguments>& args, Work work) {
    c.callback([args, work] { args->files.each([&](Run& run) { work(run, *args); }); });
}

} // namespace command
