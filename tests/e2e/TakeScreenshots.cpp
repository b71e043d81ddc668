// take_screenshots FOLDER [NAME...]: pictures of the gallery's windows, as PPM files, taken from a
// screen of its own. scripts/screenshots makes the pictures of the documents of them.

#include "tests/e2e/GalleryVisit.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kelvo::test {
namespace {

struct Shot {
    std::string_view exhibit;
    const char* title;
    int width; ///< of the template, for the place below
    int height;
    int x = -1; ///< where the pointer rests; -1: nowhere
    int y = -1;
    std::chrono::seconds patience{20}; ///< how long to wait until nothing moves any more
};

constexpr Shot kShots[] = {
    {"about", "Informazioni", 454, 360},
    {"about", "Informazioni", 1, 1},
    {"boxes", "ERRORE", 1, 1},
    {"controls", "Galleria - controlli", 260, 164},
    {"font", "Scelta del tipo di carattere", 1, 1},
    {"input-box", "Nuovo nome", 220, 68},
    {"list", "Città", 240, 176},
    {"open-file", "Scegliere un filmato", 1, 1},
    {"pictures", "Galleria - immagini", 260, 176, 110, 12},
    {"progress", "Operazione in corso...", 1, 1, -1, -1, std::chrono::seconds(3)},
    {"rich-text", "Galleria - testo formattato", 260, 150},
    {"progress", "Operazione in corso...", 1, 1, -1, -1, std::chrono::seconds(3)},
    {"rich-text", "Galleria - testo formattato", 1, 1},
    {"save-file", "Scegliere un filmato", 1, 1},
    {"string", "Titolo del filmato", 240, 98},
    {"tools", "Galleria - strumenti", 420, 220, 18, 18},
};

constexpr std::chrono::milliseconds kStill{700};

/// Waits until the area has not changed for a while: painted, and every tip shown.
std::vector<std::uint32_t> StillPixels(const VirtualScreen& screen, const Area& area,
                                       std::chrono::seconds patience) {
    const auto read = [&] {
        std::vector<std::uint32_t> pixels;
        for (int y = area.y; y < area.y + area.height; ++y) {
            for (int x = area.x; x < area.x + area.width; ++x) {
                pixels.push_back(screen.Pixel(x, y));
            }
        }
        return pixels;
    };
    auto pixels = read();
    auto since = Clock::now();
    const auto deadline = since + patience;
    while (Clock::now() - since < kStill && Clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        auto next = read();
        if (next != pixels) since = Clock::now();
        pixels = std::move(next);
    }
    return pixels;
}

bool Save(const std::string& file, const Area& area, const std::vector<std::uint32_t>& pixels) {
    std::ofstream picture(file, std::ios::binary);
    picture << "P6\n" << area.width << ' ' << area.height << "\n255\n";
    for (const std::uint32_t pixel : pixels) {
        for (const unsigned shift : {16U, 8U, 0U}) {
            picture.put(static_cast<char>(static_cast<unsigned char>(pixel >> shift)));
        }
    }
    return picture.good();
}

bool Take(const Stage& stage, const Shot& shot, const std::string& folder) {
    const VirtualScreen& screen = stage.Screen();
    screen.MoveTo(VirtualScreen::kWidth - 1, VirtualScreen::kHeight - 1);
    GalleryVisit visit(stage, std::string(shot.exhibit));
    if (!visit.WaitFor(shot.title)) {
        std::fprintf(stderr, "%s: no window \"%s\" %s\n", shot.exhibit.data(), shot.title,
                     visit.Process().Errors().c_str());
        return false;
    }
    visit.UseUnits(shot.width, shot.height);
    // The manager may still be placing it.
    WaitUntil([&] { return screen.OuterGeometry(visit.WindowId()).has_value(); });
    StillPixels(screen, visit.Window(), std::min(shot.patience, std::chrono::seconds(2)));
    if (shot.x >= 0) visit.MoveTo(shot.x, shot.y);
    const Area area = screen.OuterGeometry(visit.WindowId()).value_or(visit.Window());
    return Save(folder + "/" + std::string(shot.exhibit) + ".ppm", area,
                StillPixels(screen, area, shot.patience));
}

int Run(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        std::fputs("take_screenshots FOLDER [NAME...]\n", stderr);
        return 2;
    }
    const Stage stage;
    if (!stage.Problem().empty()) {
        std::fprintf(stderr, "%s\n", stage.Problem().c_str());
        return 1;
    }
    int missing = 0;
    for (const Shot& shot : kShots) {
        bool wanted = arguments.size() == 1;
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            wanted = wanted || arguments[i] == shot.exhibit;
        }
        if (wanted && !Take(stage, shot, arguments[0])) ++missing;
    }
    return missing == 0 ? 0 : 1;
}

} // namespace
} // namespace kelvo::test

int main(int argument_count, char** arguments) {
    return kelvo::test::Run({arguments + 1, arguments + argument_count});
}
