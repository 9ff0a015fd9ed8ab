// A pseudo-terminal pair for tests: the slave side is what a link opens.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct PtyPair {
    int master = -1;
    std::string slavePath;
    PtyPair();  // opens the master in raw mode; fails the test on error
    ~PtyPair();
    PtyPair(const PtyPair&) = delete;
    PtyPair& operator=(const PtyPair&) = delete;
    void write(const std::vector<uint8_t>& bytes) const;
    // Reads what is available within timeoutMs (returns early once `want` bytes came).
    std::vector<uint8_t> read(int timeoutMs, size_t want = SIZE_MAX) const;
};
