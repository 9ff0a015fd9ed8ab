// libFuzzer target: the configuration parser on arbitrary file contents. Whatever the
// input, it ends, and what it accepts or reports stays within its rules: accepted devices
// have a path and a known rate, a reported error names the file and line and is short.
#include <cstdint>
#include <cstdio>
#include <string>

#include "fuzz_common.h"
#include "init.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    std::string text(reinterpret_cast<const char*>(data), size);
    FILE* f = fmemopen(text.data(), text.size(), "r");
    if (!f) return 0;
    BrdConfig cfg;
    std::string error;
    bool ok = parseConfigFile(f, "f.conf", &cfg, &error);
    fclose(f);
    if (!ok) {
        FUZZ_CHECK(error.rfind("f.conf:", 0) == 0);
        // Echoed text is clipped: an error line never carries the input whole.
        FUZZ_CHECK(error.size() < 400);
        for (char c : error) FUZZ_CHECK(c != '\n' && c != '\0' && c != '\x1b');
        return 0;
    }
    FUZZ_CHECK(error.empty());
    auto checkDevice = [](const DeviceConfig& d) {
        FUZZ_CHECK(!d.path.empty());
        FUZZ_CHECK(d.enabled == 0 || d.enabled == 1);
        FUZZ_CHECK(d.baudrate >= 110 && d.baudrate <= 1000000);
    };
    if (cfg.hasMcu) checkDevice(cfg.mcu);
    for (const DeviceConfig& d : cfg.can) checkDevice(d);
    // The product-name rule and the echo helper on the same bytes.
    std::string shown = shownText(text);
    FUZZ_CHECK(shown.size() <= 80 * 4 + 3);
    if (productNameProblem(text) == nullptr)
        FUZZ_CHECK(text.size() <= kMaxProductName && text.find('/') == std::string::npos);
    return 0;
}
