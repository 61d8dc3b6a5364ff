// SPDX-License-Identifier: BSD-2-Clause
#include "fuzz/support/mutator.h"

namespace fuzz {

void mutateBytes(Bytes& bytes, std::size_t room, Dice& dice) {
    if (LLVMFuzzerMutate != nullptr) {
        const std::size_t size = bytes.size();
        bytes.resize(size + room + 1); // one more, as a pointer to nothing is none
        bytes.resize(LLVMFuzzerMutate(bytes.data(), size, size + room));
    } else if (!bytes.empty())
        bytes[dice.below(bytes.size())] = std::uint8_t(dice.next());
}

} // namespace fuzz
