// The table of every handler group's lists of rows and renders.
#include "row_lists.h"

#include "bkp/bkp_handlers.h"
#include "dsu/dsu_handlers.h"
#include "fm/fm_handlers.h"
#include "iot/iot_handlers.h"
#include "odm/odm_handlers.h"
#include "system/control.h"
#include "system/power_io.h"
#include "system/status.h"

namespace row_lists {

namespace {
const Group GROUPS[] = {
    {.name = "system status", .gets = &system_status::rows, .renders = &system_status::renders},
    {.name = "system control", .sets = &system_control::rows, .menus = &system_control::menus},
    {.name = "system power, identity, I/O, fans, radios",
     .gets = &system_power_io::rows,
     .renders = &system_power_io::renders,
     .sets = &system_power_io::setRows,
     .menus = &system_power_io::menus},
    {.name = "FM", .renders = &fm::renders},
    {.name = "backup battery", .menus = &bkp::menuRows},
    {.name = "display unit", .menus = &dsu::menuRows},
    {.name = "ODM", .gets = &odm::rows, .menus = &odm::menuRows},
    {.name = "IoT", .gets = &iot::getRows, .menus = &iot::menuRows},
};
}  // namespace

const std::span<const Group> groups = GROUPS;

}  // namespace row_lists
