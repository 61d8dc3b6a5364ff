// error.h - the one kind of error of the codecs.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include <stdexcept>
#include <string>

namespace codecs {

// What is wrong and where, in one line. A codec knows bytes and rows, not files: it says "byte 4711: no such marker".
struct Error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// One that begins with the name of its file already.
struct FileError : Error {
    using Error::Error;
};

// Calls what works on a file, and puts the name of that file ahead of an error that has none yet. So an encoder may run
// in here under the name of its input while the output names itself.
template <class Call> auto named(const std::string& file, Call call) -> decltype(call()) {
    try {
        return call();
    } catch (const FileError&) {
        throw;
    } catch (const Error& e) {
        throw FileError(file + ": " + e.what());
    }
}

} // namespace codecs
