// Start-up and close-down: product detection, the configuration file, the links.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "update/settings.h"

// Outcome of LAUNCH_INIT_CONFIG, for the front ends' exit statuses.
enum InitStatus {
    INIT_OK = 0,
    INIT_NO_CONFIG = 1,     // no configuration file for the product
    INIT_BAD_CONFIG = 2,    // a malformed line, unknown key, bad number or baud rate
    INIT_DEVICE_ERROR = 3,  // a configured, enabled device could not be opened
};

struct DeviceConfig {
    std::string path;
    int baudrate = 115200;
    int enabled = 0;
};

struct BrdConfig {
    DeviceConfig mcu;
    bool hasMcu = false;
    int debugLevel = 0;
    std::vector<DeviceConfig> can;
    // <MCU_UPDATE_INFO> and <CAN_UPDATE_INFO>, for the firmware update.
    update::UpdateInfo mcuUpdate, canUpdate;
};

// Parses a configuration file. On error returns false with "FILE:LINE: reason" in *error.
bool parseConfigFile(FILE* f, const std::string& fileName, BrdConfig* cfg, std::string* error);

// The detected product name with one trailing "\n" (BRDCTL_PRODUCT, DMI, device tree).
// Empty when nothing names the product.
std::string detectProductName();

// The machine architecture as uname(2) reports it ("x86_64", "aarch64"), set by
// LAUNCH_INIT_CONFIG.
extern char szArchitecture[65];

// Finds <dir>/<product>.conf in $BRDCTL_CONFIG_DIR, ./configs, /etc/brdctl/configs.
// Returns the path, or "" with the places looked in in *searched.
std::string findConfigFile(const std::string& product, std::string* searched);

// Detects the product, reads the configuration, opens the enabled devices, registers
// the event callback and fills the command pools. Returns the open configuration file,
// or null on any failure with the reason in initStatus and one line on stderr.
FILE* LAUNCH_INIT_CONFIG(int mode, void (*eventCallback)(struct CALLBACK_DATA));
extern InitStatus initStatus;
// The configuration file in use (set by LAUNCH_INIT_CONFIG once found).
extern std::string g_configPath;

// True when the links a command needs are open; otherwise one stderr line naming the
// configuration file and the device it lacks.
bool LAUNCH_CHECK_DEVICES(bool needsMcu, bool needsCan);

// Text from a file or the environment as it may be echoed: at most 80 characters
// ("..." after a clipped one), bytes outside printable ASCII and '\\' shown as \xHH.
std::string shownText(const std::string& text);
// Why a product name (without its line end) cannot name a configuration file, or null.
constexpr size_t kMaxProductName = 62;
const char* productNameProblem(const std::string& bare);
extern BrdConfig g_config;

// Makes descriptors 0, 1 and 2 valid (on /dev/null) when the program was started without
// them; the first thing every program does.
void openStandardDescriptors();

// Opens the links the configuration names. Returns 1, or 0 when an enabled device
// cannot be opened.
int LAUNCH_INIT_DEV();
// Stops the link threads, closes the ports and the configuration file.
int LAUNCH_EXIT(const char* mode, FILE* fConfig, int flag);
