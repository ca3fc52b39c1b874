/// Collects what the engine says while it lives.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "engine/common/log.h"

namespace nemra::test {

class Messages {
public:
    Messages() : capture_([this](const log::Message& message) { all_.push_back(message); }) {}

    std::ptrdiff_t errors() const { return count(NEMRA_LOG_ERROR); }
    std::ptrdiff_t warnings() const { return count(NEMRA_LOG_WARNING); }
    /// "source: text" of each, one in a line.
    std::string text() const {
        std::string lines;
        for (const auto& message : all_) lines += message.source + ": " + message.text + "\n";
        return lines;
    }

private:
    std::ptrdiff_t count(LogLevel_t level) const {
        return std::count_if(all_.begin(), all_.end(), [&](const auto& message) { return message.level == level; });
    }

    std::vector<log::Message> all_;
    log::Capture capture_;
};

}  // namespace nemra::test
