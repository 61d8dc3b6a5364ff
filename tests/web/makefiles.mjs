// makefiles.mjs: makes all files that the tests need, ahead of them.
// SPDX-License-Identifier: BSD-2-Clause
import { makeAll } from "./files.mjs";

makeAll();
