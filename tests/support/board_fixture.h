// Runs command handlers in-process against the simulated board: a simulator on a
// pseudo-terminal, a real link opened on it, the command pool filled from the table.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "brdsim.h"
#include "function_MAP.h"
#include "launch.h"

class BoardFixture {
   public:
    explicit BoardFixture(const std::string& product = "KX07") : sim(product) {
        EXPECT_TRUE(sim.start());
        mcu_content = init_MCU(sim.ptyPath().c_str(), MCU_TYPE_ST, 115200);
        EXPECT_EQ(mcu_content->result, 1);
        setProduct(product);
        nMCUDevice = 1;
        nCANDevice = 0;
        INIT_CMD_POOL();
    }
    ~BoardFixture() {
        exit_LIB(mcu_content);
        mcu_content = nullptr;
        nMCUDevice = 0;
        g_input = stdin;
    }

    void setProduct(const std::string& product) {
        std::string withEnd = product + "\n";
        snprintf(szProductName, sizeof szProductName, "%s", withEnd.c_str());
        snprintf(mcu_content->szProductName, sizeof mcu_content->szProductName, "%s",
                 withEnd.c_str());
    }

    int fd() const { return mcu_content->fd; }

    // Runs the handler of the row named `name` with `input` as what the user types;
    // stdout goes to *out. Returns the handler's result.
    int run(const std::string& name, const std::string& input, std::string* out) {
        const FUNCTION_MAP_ENTRY* e = findFunctionEntry(name.c_str());
        EXPECT_NE(e, nullptr) << name;
        if (!e) return -1000;
        int index = 0;
        findCommandIndex(name.c_str(), &index);
        std::string in = input;
        FILE* f = in.empty() ? fopen("/dev/null", "r") : fmemopen(in.data(), in.size(), "r");
        g_input = f;
        char nameBuf[128];
        snprintf(nameBuf, sizeof nameBuf, "%s", name.c_str());
        testing::internal::CaptureStdout();
        int r = e->func(index, nameBuf);
        fflush(stdout);
        *out = testing::internal::GetCapturedStdout();
        g_input = stdin;
        fclose(f);
        return r;
    }

    // The last request the simulator received.
    brdsim::Request lastRequest() const {
        auto all = sim.requests();
        return all.empty() ? brdsim::Request{} : all.back();
    }

    brdsim::Simulator sim;
};
