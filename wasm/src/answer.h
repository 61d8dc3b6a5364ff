// answer.h - what a call gives back, where JavaScript finds it.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

#include "codecs/picture/picture.h"

#include <new>

namespace web {

struct Answer {
    bool failed = false;
    std::string text;
    codecs::Picture picture; // with what travels beside it
    codecs::Bytes file;      // or a file
};

// Keeps an answer, and gives the words that describe it (front.cpp).
const std::uint32_t* keep(Answer answer);
// Gives the memory back.
void release();

// What a call answers, or why it does not.
template <class Call> const std::uint32_t* answered(Call call) {
    release();
    Answer failure;
    failure.failed = true;
    try {
        return keep(call());
    } catch (const std::bad_alloc&) {
        failure.text = "there is not enough memory";
    } catch (const std::length_error&) {
        failure.text = "there is not enough memory"; // a vector of more than a pointer can tell
    } catch (const std::exception& e) {
        failure.text = e.what();
    }
    return keep(std::move(failure));
}

} // namespace web
