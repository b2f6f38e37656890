// Random texts for the property tests. The seed is fixed: a failure comes back in every run.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

class RandomText {
public:
    // Texts are made of the characters of `alphabet`; repeat one to see it more often.
    explicit RandomText(std::wstring_view alphabet) : alphabet_(alphabet) {}

    // 0 to `most`, both included.
    std::size_t UpTo(std::size_t most) { return generator_() % (most + 1); }

    std::wstring Text(std::size_t mostCharacters) {
        std::wstring text(UpTo(mostCharacters), L'\0');
        for (wchar_t& character : text) {
            character = alphabet_[UpTo(alphabet_.size() - 1)];
        }
        return text;
    }

private:
    std::wstring_view alphabet_;
    std::mt19937 generator_{20260105};
};

// How many random texts each property is tried with.
inline constexpr int RandomTexts = 3000;
