#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A step of a peer in a conversation with the gateway: bytes to send, and what to do after that.
struct Step {
    std::string bytes;
    char action = 0; // 0 in the last step
};

// Splits a fuzzer's input into steps; there is at least one. The byte 0xFF starts an escape: 0xFF
// 0xFF is the byte 0xFF, and 0xFF before another byte ends the step with this byte as its action.
inline std::vector<Step> stepsIn(const std::uint8_t* data, std::size_t size) {
    constexpr std::uint8_t kEscape = 0xff;
    std::vector<Step> steps(1);
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] != kEscape) {
            steps.back().bytes.push_back(static_cast<char>(data[i]));
        } else if (++i < size && data[i] == kEscape) {
            steps.back().bytes.push_back(static_cast<char>(kEscape));
        } else if (i < size) {
            steps.back().action = static_cast<char>(data[i]);
            steps.emplace_back();
        }
    }
    return steps;
}
