#include "bench/container/codec/Films.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace kelvo::films {

namespace {

std::uint16_t Pixel(double red, double green, double blue) {
    const auto part = [](double level) {
        return static_cast<unsigned>(std::clamp(level, 0.0, 31.0));
    };
    return static_cast<std::uint16_t>(part(red) << 10U | part(green) << 5U | part(blue));
}

std::uint16_t DrawingAt(double x, double y, std::size_t number) {
    const double angle = 0.1 * static_cast<double>(number);
    const double from_centre = std::hypot(x - 320, y - 240);
    if (from_centre > 200) return Pixel(4, 6, 12);
    if (from_centre > 188) return Pixel(28, 24, 8);
    const double along = (x - 320) * std::cos(angle) + (y - 240) * std::sin(angle);
    const double across = (y - 240) * std::cos(angle) - (x - 320) * std::sin(angle);
    if (along > 0 && along < 170 && std::abs(across) < 5) return Pixel(30, 4, 4);
    const double hour = std::atan2(y - 240, x - 320) * 6 / 3.14159265358979;
    if (from_centre > 160 && std::abs(hour - std::round(hour)) < 0.08) return Pixel(2, 2, 2);
    return Pixel(30, 30, 28);
}

std::uint16_t CameraAt(double x, double y, std::size_t number, double noise) {
    const double t = static_cast<double>(number);
    const double light = 14 + 8 * std::sin(x / 190 + t / 40) * std::cos(y / 130);
    const double detail = 3 * std::sin(x / 7 + 2 * std::sin(y / 31)) * std::sin(y / 9);
    const double moving = std::hypot(x - 200 - 6 * t, y - 260) < 70 ? 7 : 0;
    return Pixel(light + detail + moving + noise, light * 0.9 + detail + noise,
                 light * 0.7 + noise);
}

std::uint16_t ScreenAt(std::size_t x, std::size_t y, std::size_t number) {
    if (y < 20) return Pixel(3, 8, 20);
    const bool scrolling = x > 330;
    if (x % 330 < 8) return Pixel(18, 18, 18);
    const std::size_t line = y + (scrolling ? 4 * number : 0);
    const std::size_t letter = x / 8 * 2654435761U + line / 14 * 40503U + 77U * (x / 330);
    const std::size_t inside = (x % 8) + 8 * (line % 14);
    const bool blank = line % 14 > 9 || x % 8 > 5 || letter % 7 == 0;
    const bool ink = !blank && ((letter >> (inside % 23)) & 1U) != 0;
    return ink ? Pixel(1, 1, 1) : Pixel(30, 30, 30);
}

} // namespace

const char* Name(Scene scene) {
    switch (scene) {
    case Scene::Drawing:
        return "drawing";
    case Scene::Camera:
        return "camera";
    case Scene::Screen:
        return "screen";
    }
    return "";
}

std::vector<Frame> Draw(Scene scene) {
    std::mt19937 random(1);
    std::normal_distribution<double> noise(0.5, 0.35);
    std::vector<Frame> film;
    for (std::size_t number = 0; number < kFrames; ++number) {
        Frame frame;
        frame.reserve(kFrameBytes);
        for (std::size_t y = 0; y < kHeight; ++y) {
            for (std::size_t x = 0; x < kWidth; ++x) {
                const auto across = static_cast<double>(x);
                const auto down = static_cast<double>(y);
                const std::uint16_t pixel =
                    scene == Scene::Drawing  ? DrawingAt(across, down, number)
                    : scene == Scene::Camera ? CameraAt(across, down, number, noise(random))
                                             : ScreenAt(x, y, number);
                frame.push_back(static_cast<std::uint8_t>(pixel));
                frame.push_back(static_cast<std::uint8_t>(pixel >> 8U));
            }
        }
        film.push_back(std::move(frame));
    }
    return film;
}

} // namespace kelvo::films
