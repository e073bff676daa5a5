#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One file per target. Both ways of running them use the same two functions: libFuzzer, which
// learns from coverage
// (./dev fuzz), and corpus_runner.cpp, which any compiler builds and every test run runs for a
// moment.

/// Works on one input. Whatever the input is: no crash, no finding of a sanitizer, no exception
/// that the code under test does not promise, no input that takes more than a moment.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tavrix::fuzz {

/// Inputs that get far: what hosts and servers really send.
std::vector<std::string> seeds();

}  // namespace tavrix::fuzz
