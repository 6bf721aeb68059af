#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

/// Speech for the models in tests/recogniser/models, which understand a tone as a word or a piece of one. The
/// same piece twice needs a pause of 0.2 s, others none.
class ToneSpeech {
 public:
    static constexpr int sampleRate = 16000;

    struct Piece {
        std::string_view text;  // what begins a word begins with a blank
        double hertz;
    };
    static constexpr std::array<Piece, 20> pieces{{
        {" hola", 577.6},    {" mun", 698.6},     {"do", 831.2},      {" uno", 976.3},
        {" dos", 1135.2},    {" tres", 1309.1},   {" sí", 1499.5},    {" no", 1708.0},
        {" activa", 1936.2}, {" el", 2186.0},     {" modo", 2459.5},  {" reunión", 2759.0},
        {" busca", 3086.8},  {" correo", 3445.7}, {" nuevo", 3838.6}, {" gracias", 4268.7},
        {" adiós", 4739.6},  {".", 5255.1},       {",", 5819.5},      {"?", 6437.4},
    }};

    /// `seconds` of 0.2 and more are heard for certain.
    void say(const Piece& piece, double seconds = 0.3, double level = 0.3) {
        const auto count = static_cast<std::size_t>(seconds * sampleRate);
        for (std::size_t i = 0; i < count; ++i) {
            const auto fade =
                std::min(1.0, static_cast<double>(std::min(i, count - 1 - i)) / (0.01 * sampleRate));
            const auto angle = 2 * std::numbers::pi * piece.hertz * static_cast<double>(i) / sampleRate;
            samples_.push_back(static_cast<float>(level * fade * std::sin(angle)));
        }
        text_ += piece.text;
        const double until = static_cast<double>(samples_.size()) / sampleRate;
        said_.push_back({piece.text, until - static_cast<double>(count) / sampleRate, until});
    }

    void pause(double seconds) {
        samples_.resize(samples_.size() + static_cast<std::size_t>(seconds * sampleRate));
    }

    /// A piece by chance that is not the one before, at any pace and level.
    template <typename Random>
    void sayAny(Random& random) {
        const auto index = std::uniform_int_distribution<std::size_t>(0, pieces.size() - 1)(random);
        if (std::exchange(last_, index) == index) pause(0.25);
        say(pieces[index], std::uniform_real_distribution(0.2, 0.5)(random),
            std::pow(10, std::uniform_real_distribution(-1.5, -0.2)(random)));
    }

    const std::vector<float>& samples() const { return samples_; }

    /// All that was said.
    std::string text() const { return text_.starts_with(' ') ? text_.substr(1) : text_; }

    /// The pieces that lie whole between two times, in seconds; they begin as the first of them does.
    std::string textWithin(double from, double until) const {
        std::string text;
        for (const auto& piece : said_)
            if (piece.from >= from && piece.until <= until) text += piece.text;
        return text;
    }

 private:
    struct Said {
        std::string_view text;
        double from;
        double until;
    };

    std::vector<float> samples_;
    std::vector<Said> said_;
    std::string text_;
    std::size_t last_ = pieces.size();
};

}  // namespace dorix
