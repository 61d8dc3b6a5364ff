// Tables are only read: several threads code with the same ones at once, each with a state of its own.
// SPDX-License-Identifier: BSD-2-Clause
#include "tests/jpeg/support/sequential.h"

#include <gtest/gtest.h>
#include <thread>

TEST(SharedTables, ScansOnSeveralThreads) {
    Luminance tables;
    std::vector<std::thread> team;
    for (int n = 0; n < 4; ++n)
        team.emplace_back([&tables, n] {
            Rng rng(std::uint64_t(n) + 0x7EAD);
            for (int round = 0; round < 5; ++round) {
                const Scan scan = makeScan(rng, 40, tables, 3, 9);
                StreamIn in(withMarker(scan.stream));
                BlockOut out;
                for (const Block& b : scan.blocks) {
                    ASSERT_EQ(decode(in, out, tables.decDC, tables.decAC).status, zmxStsNoErr);
                    ASSERT_EQ(out.plain, b);
                }
            }
        });
    for (std::thread& t : team) t.join();
}
