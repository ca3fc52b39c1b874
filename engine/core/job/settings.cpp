#include "engine/core/job/settings.h"

#include <sched.h>

#include <algorithm>
#include <charconv>
#include <thread>

#include "engine/core/job/halt_condition.h"

namespace nemra::core {

namespace {

constexpr int kMostThreads = 1024;

bool toFlag(std::string_view value, bool& flag) {
    if (value == "true" || value == "1") {
        flag = true;
    } else if (value == "false" || value == "0" || value.empty()) {
        flag = false;
    } else {
        return false;
    }
    return true;
}

template <class Number>
bool toNumber(std::string_view value, Number& number) {
    Number read{};
    const auto [end, fault] = std::from_chars(value.data(), value.data() + value.size(), read);
    if (fault != std::errc() || end != value.data() + value.size() || !(read - read == Number{})) return false;
    number = read;
    return true;
}

}  // namespace

bool Settings::set(std::string_view name, std::string_view value, std::string& why) {
    const auto wrong = [&](std::string_view wanted) {
        why = "the parameter \"" + std::string(name) + "\" takes " + std::string(wanted) + ", not \"" + std::string(value) + "\"";
        return false;
    };
    if (name == "library_paths") {
        libraryPaths = splitPaths(value);
    } else if (name == "setup") {
        setup = value;
    } else if (name == "output_file_name") {
        outputFile = value;
    } else if (name == "output_raw") {
        return toFlag(value, outputRaw) || wrong("\"true\" or \"false\"");
    } else if (name == "resume") {
        return toFlag(value, resume) || wrong("\"true\" or \"false\"");
    } else if (name == "adaptive") {
        return toFlag(value, adaptive) || wrong("\"true\" or \"false\"");
    } else if (name == "save_interval") {
        return toNumber(value, saveInterval) || wrong("a number of seconds");
    } else if (name == "halt_noise") {
        return toNumber(value, haltNoise) || wrong("a number");
    } else if (name == "first_sample") {
        std::uint32_t first = 0;
        if (!toNumber(value, first) || first >= HaltCondition::kEndOfSamples) return wrong("the index of a sample");
        firstSample = first;
    } else if (name == "num_threads") {
        return toThreads(value, threads) || wrong("a whole number");
    } else if (name == "remote_host") {
        remoteHost = value;
    } else if (name == "password") {
        password = value;
    } else if (name == "remote_patience") {
        return toNumber(value, remotePatience) || wrong("a number of seconds");
    } else if (name == "local_remote_server") {
        return toFlag(value, localRemoteServer) || wrong("\"true\" or \"false\"");
    } else {
        why = "unknown parameter \"" + std::string(name) + "\"";
        return false;
    }
    return true;
}

std::vector<std::string> splitPaths(std::string_view list) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const auto end = std::min(list.find(';'), list.size());
        if (end > 0) parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts;
}

bool toThreads(std::string_view value, int& threads) {
    if (!toNumber(value, threads)) return false;
    threads = std::min(threads, kMostThreads);
    return true;
}

int availableCores() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    if (sched_getaffinity(0, sizeof(cores), &cores) == 0) return std::max(1, CPU_COUNT(&cores));
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

int renderThreads(int wanted) { return wanted > 0 ? wanted : availableCores(); }

}  // namespace nemra::core
