// The update sequence of both controllers: a pure plan (erase range, write blocks,
// verify units, expected line time) and the steps that carry it out over a link.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "image.h"
#include "progress.h"
#include "settings.h"
#include "update_rows.h"

namespace update {

// Sends one update row and returns the exchange's result code (1 answer, 0 no usable
// answer, -2 write failed, -4 time-out, -5 busy) with the answer's data in *answer (for
// the CAN MCU without its command echo). `mode` is the link mode to send it in.
class UpdateLink {
   public:
    virtual ~UpdateLink() = default;
    virtual int exchange(const UpdateRow& row, Mode mode, const Bytes& data, Bytes* answer) = 0;
};

struct Block {
    uint32_t addr;
    uint32_t len;
};

struct Plan {
    uint32_t eraseStart = 0, eraseEnd = 0;
    std::vector<Block> writes;  // WRITE_SIZE blocks holding anything but 0xFF
    std::vector<Block> verify;  // system MCU: pages; CAN MCU: VERIFY_SIZE blocks
    uint64_t imageBytes = 0;
    uint64_t lineBytes = 0;  // request and answer frames, both directions, stuffed
    // Time the frames need at `baud` (10 bits a byte).
    double lineSeconds(int baud) const;
};

// The page size a plan assumes before the boot loader has told its own.
uint32_t defaultPageSize(Target t);
Plan makePlan(const Settings& s, const Image& img, uint32_t pageSize);

// Bytes one frame takes on the line, stuffed: `inner` is what lies between start and
// end code before stuffing (the system MCU's frames end with their CRC-8).
uint64_t stuffedLength(const Bytes& inner);

// The application version as its answer gives it: the system MCU's model tag text, the
// CAN MCU's three numbers as "1.4.2".
std::string versionText(Target t, const Bytes& answer);

struct Report {
    std::string outcome = "failed";  // "updated", "verified", "differs", "info", "failed"
    std::string error;               // why it stopped
    std::string hint;                // how to resume
    std::string state = "unknown";   // "application", "boot loader"
    bool verified = false;
    bool rebooted = false;
    bool resumed = false;  // the board was found in its boot loader
    int retries = 0;
    uint64_t bytesWritten = 0;
    int blocksWritten = 0;
    uint32_t firstDifference = 0;
    bool hasDifference = false;
    std::string appVersion;  // as the application reports it
    BootInfo boot;
    bool hasBoot = false;
};

constexpr int EXIT_DONE = 0;
constexpr int EXIT_BOARD = 1;
constexpr int EXIT_REFUSED = 2;
constexpr int EXIT_CONFIG = 3;

class Updater {
   public:
    Updater(UpdateLink& link, const Settings& s, Progress& progress,
            const std::atomic<bool>& interrupted);
    // Returns an exit status (EXIT_...); the report tells what happened.
    int update(const Image& img, Report* rep);
    int verifyOnly(const Image& img, Report* rep);
    int info(Report* rep);

   private:
    enum class Call { Ok, Failed };
    // Sends a row, retrying a missing or unusable answer; checks the status byte of rows
    // that have one and the least answer length. On failure fills rep->error.
    Call call(Step step, Mode mode, const Args& a, Bytes* answer, Report* rep);
    bool enterBootLoader(Report* rep);
    bool checkBootInfo(Report* rep);
    bool askMode(Bytes* ans, Report* rep);
    bool verify(const Plan& plan, const Image& img, Report* rep, bool reading);
    bool firstDifference(const Block& b, const Image& img, Report* rep);
    int stop(Report* rep, int code);

    UpdateLink& link_;
    Settings s_;
    Progress& progress_;
    const std::atomic<bool>& interrupted_;
    Mode session_ = Mode::App;
};

constexpr int TRIES = 3;

}  // namespace update
