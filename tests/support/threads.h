// threads.h - stands in for libzmxcore's thread count, and counts the parallel regions that a call opens.
//
// Linking threads.cpp into a test program puts these definitions ahead of the libraries' own.
// SPDX-License-Identifier: BSD-2-Clause
#pragma once

// What ownGetNumThreads() answers from now on.
void setThreads(int n);

// How often ownGetNumThreads() has been asked, and how many parallel regions have been opened since the start.
int threadsAsked();
long regionsOpened();

// Whether regions can be counted: with the GNU OpenMP runtime they can.
bool regionsCounted();
