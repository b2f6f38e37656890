// What is tried with random inputs: everything that only computes, each against a second
// implementation that is written for clearness alone, or against what must hold of any result.
#pragma once

#include <cstddef>
#include <cstdint>

// Takes the first byte for the choice of the target and the rest for its input. Ends the process
// with a message where the two disagree.
void TryInput(const std::uint8_t* data, std::size_t size);
