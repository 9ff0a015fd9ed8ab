// The configuration file that points the front ends at a simulated board.
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

#include "brdsim.h"

namespace brdsim {

std::string writeConfig(const std::string& dir, const std::string& product,
                        const std::string& ptyPath, int debugLevel,
                        const std::vector<std::string>& canPtys) {
    std::string model = product;
    while (!model.empty() && (model.back() == '\n' || model.back() == ' ')) model.pop_back();
    if (::mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) return {};
    std::string path = dir + "/" + model + ".conf";
    std::string tmp = path + ".tmp";
    FILE* f = std::fopen(tmp.c_str(), "w");
    if (!f) return {};
    std::fprintf(f,
                 "# %s: the simulated board (brdsim)\n"
                 "<MCU_INFO>\n"
                 "MCU_DEVICE=%s,115200,1\n"
                 "DEBUG_LEVEL=%d\n"
                 "<MCU_UPDATE_INFO>\n"
                 "FILE_PATH=/lib/firmware/board/mcu.bin\n"
                 "MCU_startAddress=0x08000000\n"
                 "ProgramROM_startAddress=0x08004000\n"
                 "MCU_versionAddress=0x0800F000\n"
                 "WRITE_SIZE=128\n"
                 "VERIFY_SIZE=128\n"
                 "FW_MODEL=%s\n"
                 "<CAN_INFO>\n",
                 model.c_str(), ptyPath.c_str(), debugLevel, model.c_str());
    if (canPtys.empty())
        std::fprintf(f,
                     "# the simulated board has no separate CAN controller\n"
                     "CAN_DEVICE=/dev/ttyACM0,115200,0\n");
    for (const std::string& p : canPtys) std::fprintf(f, "CAN_DEVICE=%s,115200,1\n", p.c_str());
    std::fprintf(f,
                 "<CAN_UPDATE_INFO>\n"
                 "FILE_PATH=/lib/firmware/board/can.bin\n");
    bool ok = std::ferror(f) == 0;
    if (std::fclose(f) != 0) ok = false;
    // Renamed into place so that a reader never sees half a file.
    if (!ok || std::rename(tmp.c_str(), path.c_str()) != 0) {
        int e = errno;
        std::remove(tmp.c_str());
        errno = e;
        return {};
    }
    return path;
}

}  // namespace brdsim
