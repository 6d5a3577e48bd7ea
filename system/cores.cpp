#include "system/cores.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace quorvane {
namespace {

constexpr char kVariable[] = "QUORVANE_CORES";
// Version 2 of control groups; in a container its own group is the root of what it sees.
constexpr char kGroup[] = "/sys/fs/cgroup/";

int limit() noexcept {
    const char* const told = std::getenv(kVariable);
    return told == nullptr ? 0 : std::atoi(told);
}

/// The first number of a file; 0 where there is none.
uint64_t numberIn(const std::string& path) {
    std::ifstream file(path);
    uint64_t value = 0;
    return file >> value ? value : 0;
}

/// Cores that the control group may use the time of; 0: all.
int groupsCores() {
    std::ifstream file(std::string(kGroup) + "cpu.max");
    double quota = 0.0, period = 0.0;
    // "max 100000", or microseconds in each period.
    if (!(file >> quota >> period) || quota <= 0.0 || period <= 0.0) return 0;
    return std::max(1, static_cast<int>(quota / period + 0.5));
}

uint64_t machinesFreeMemory() {
    std::ifstream file("/proc/meminfo");
    std::string name, unit;
    uint64_t kilobytes = 0;
    while (file >> name >> kilobytes) {
        std::getline(file, unit);
        if (name == "MemAvailable:") return kilobytes << 10;
    }
    return 0;
}

}  // namespace

int usableCores() noexcept {
    static const int cores = [] {
        const int group = groupsCores();
        const int all = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
        return group > 0 ? std::min(all, group) : all;
    }();
    return limit() > 0 ? std::min(cores, limit()) : cores;
}

void limitCores(int cores) {
    const std::string number = std::to_string(cores);
    for (const char* name : {kVariable, "LP_NUM_THREADS", "VIPS_CONCURRENCY"})
        setenv(name, number.c_str(), 1);
}

bool coresAreLimited() noexcept { return limit() > 0; }

uint64_t freeMemory() {
    const uint64_t machine = machinesFreeMemory();
    const uint64_t most = numberIn(std::string(kGroup) + "memory.max");
    const uint64_t used = numberIn(std::string(kGroup) + "memory.current");
    return most > used && machine > 0 ? std::min(machine, most - used) : machine;
}

}  // namespace quorvane
