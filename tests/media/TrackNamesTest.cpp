#include "media/TrackNames.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::test {

namespace {

TEST(TrackNames, NameTheTwoFilesOfAFilm) {
    struct Case {
        const char* picked;
        const char* video;
        const char* audio;
        bool is_kva;
    };
    const Case cases[] = {
        {"C:\\film\\a.KVA", "C:\\film\\a.kva", "C:\\film\\a.kva", true},
        {"/film/a.kva", "/film/a.kva", "/film/a.kva", true},
        {"/film/a.kvf", "/film/a.kvf", "/film/a.kaf", false},
        {"/film/a.kaf", "/film/a.kvf", "/film/a.kaf", false},
        {"/film/a", "/film/a.kvf", "/film/a.kaf", false},
        {"/film/a.b.kva", "/film/a.b.kva", "/film/a.b.kva", true},
        {"/film.kva/a", "/film.kva/a.kvf", "/film.kva/a.kaf", false},
        {"/film/.kva", "/film/.kva.kvf", "/film/.kva.kaf", false}, // all title
        {"/film/a.", "/film/a.kvf", "/film/a.kaf", false},
        {"a.kvax", "a.kvf", "a.kaf", false},
        {"", ".kvf", ".kaf", false},
    };
    for (const Case& c : cases) {
        const TrackNames names = ResolveTrackNames(c.picked);
        EXPECT_EQ(names.video.View(), c.video) << c.picked;
        EXPECT_EQ(names.audio.View(), c.audio) << c.picked;
        EXPECT_EQ(names.is_kva, c.is_kva) << c.picked;
    }
}

} // namespace

} // namespace kelvo::test
