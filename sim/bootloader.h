// The simulated boot loaders of the system MCU (IAP rows, device 3) and of the CAN MCU:
// flash memory that erases to 0xFF by page and whose writes only clear bits, the
// information, version and state answers, the check code, read-back, the update
// request and the reboot into the application, with faults injected during an update.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace brdsim {

using Bytes = std::vector<uint8_t>;

struct FlashLayout {
    uint32_t flashStart, flashEnd, appStart, versionAddress, ramStart, ramEnd;
    uint16_t pageSize, maxWrite;
    uint8_t major, minor;  // boot loader version
};
// The system MCU: 128 KiB at 0x08000000, application from 0x08004000, 1 KiB pages.
FlashLayout stFlashLayout();
// The CAN MCU: 256 KiB at 0, application from 0x2000, 256-byte pages, SRAM at 0x10000000.
FlashLayout nxpFlashLayout();

enum class FlashFaultKind {
    LostAnswer,     // the answer to the write is not sent
    CorruptAnswer,  // the answer is sent damaged (system MCU: bad CRC; CAN MCU: bad echo)
    WriteNotTaken,  // the write is acknowledged, the page keeps its old bytes
    Restart,        // after answering, the board restarts: back in its boot loader, locked
};

struct FlashFault {
    FlashFaultKind kind;
    int atWrite = 1;  // the n-th write request from now (1 = the next one)
    int count = 1;    // for how many write requests in a row
};

// Parses "lost@N", "corrupt@N", "nowrite@N", "restart@N" (optionally "xC" for a count,
// "lost@5x3"). False on anything else.
bool parseFlashFault(const std::string& text, FlashFault* out);

class BootLoader {
   public:
    // The flash starts with a small valid application whose model tag is `appTag`.
    BootLoader(FlashLayout layout, std::string appTag);

    struct Reply {
        Bytes data;            // the answer's data (ST: after device/command/address;
                               // CAN: after the command echo)
        bool lost = false;     // send nothing
        bool corrupt = false;  // send it damaged
    };
    // A request to the system MCU's IAP device: command 0 (start/cancel), 2 GET, 3 SET.
    Reply st(uint8_t command, uint8_t address, const Bytes& data);
    // A request to the CAN MCU by command code (0x10 erase ... 0x42 update request, 0x02
    // application version).
    Reply nxp(uint8_t code, const Bytes& data);

    void queueFault(FlashFault f);
    // Flash operations take the time a real part needs (page erase, word programming).
    void setFlashTiming(bool on);

    bool inBootLoader() const;
    bool unlocked() const;
    Bytes readFlash(uint32_t addr, size_t n) const;
    // Puts an application into flash as if it had been programmed (for tests).
    void loadApplication(uint32_t addr, const Bytes& bytes);
    // The model tag the running application reports.
    std::string appVersion() const;
    int writeCount() const;
    const FlashLayout& layout() const { return layout_; }

   private:
    enum class Op {
        Mode,
        Request,
        Start,
        Cancel,
        Info,
        Version,
        Read,
        State,
        Unlock,
        Erase,
        Write,
        Check,
        Reboot,
        Unknown
    };
    Reply run(Op op, const Bytes& data);
    bool appValid() const;  // a plausible vector table at the application start
    bool inApp(uint32_t addr, uint64_t len) const;

    FlashLayout layout_;
    mutable std::mutex mu_;
    Bytes flash_;
    bool boot_ = false;
    bool unlocked_ = false;
    int state_ = 0;
    bool timing_ = false;
    int writes_ = 0;
    std::deque<FlashFault> faults_;
};

}  // namespace brdsim
