#include "cloud/APIError.h"
#include "cloud/EventStreamReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace dorix {
namespace {

using testing::ElementsAre;

std::string event(const std::string& json) { return "data: " + json + "\n\n"; }
std::string textEvent(const std::string& text) {
    return event(R"({"type":"text","text":")" + text + R"("})");
}

class EventStreamReaderTest : public testing::Test {
 protected:
    /// What it gives at the end.
    std::string read(std::string_view bytes, std::size_t pieceSize = std::string_view::npos) {
        EventStreamReader reader([this](std::string_view text) { texts.emplace_back(text); });
        try {
            for (; bytes.size() > pieceSize; bytes.remove_prefix(pieceSize)) {
                reader.read(bytes.substr(0, pieceSize));
            }
            reader.read(bytes);
            return reader.finish();
        } catch (const APIError& error) {
            return "failed: " + error.localizedDescription();
        }
    }

    std::vector<std::string> texts;
};

TEST_F(EventStreamReaderTest, TheTextGrowsEventByEvent) {
    EXPECT_EQ(read(textEvent("Ho") + textEvent("la ñ") + textEvent("")), "Hola ñ");
    EXPECT_THAT(texts, ElementsAre("Ho", "Hola ñ", "Hola ñ"));
    EXPECT_EQ(read(""), "");
    EXPECT_EQ(read(R"(data: {"type":"text","text":"without a line end"})"), "without a line end");
    EXPECT_EQ(
        read("data: {\"type\":\"text\",\"text\":\"a\"}\r\n\r\ndata: {\"type\":\"text\",\"text\":\"b\"}\r\r"),
        "ab");
}

TEST_F(EventStreamReaderTest, WhatIsNoEventOfOursIsPassedOver) {
    EXPECT_EQ(read(": comment\n\nevent: x\nid: 1\ndata:{\"type\":\"error\"}\n" + event("{") + event("[1]") +
                   event("3") + event("{}") + event(R"({"type":3})") + event(R"({"type":"done"})") +
                   event("{\"type\":\"text\",\"text\":\"\xff\"}") + event(R"({"type":"text","text":1e999})") +
                   textEvent("kept")),
              "kept");
    EXPECT_THAT(texts, ElementsAre("kept"));
    texts.clear();
    EXPECT_EQ(read(event(R"({"type":"text"})") + event(R"({"type":"text","text":3})")), "");
    EXPECT_THAT(texts, ElementsAre("", "")) << "an increment of nothing is one";
}

TEST_F(EventStreamReaderTest, AnErrorEndsIt) {
    EXPECT_EQ(
        read(textEvent("some") + event(R"({"type":"error","message":"No hay modelo."})") + textEvent("more")),
        "failed: No hay modelo.");
    EXPECT_THAT(texts, ElementsAre("some"));
    EXPECT_EQ(read(event(R"({"type":"error"})")), "failed: Error");
}

TEST_F(EventStreamReaderTest, ItIsReadAlikeWhereverItIsCut) {
    const auto bytes = textEvent("año\\n") + ": x\r\n" + textEvent("😀") + textEvent("fin");
    for (std::size_t size = 1; size < bytes.size(); ++size) {
        texts.clear();
        EXPECT_EQ(read(bytes, size), "año\n😀fin");
        EXPECT_THAT(texts, ElementsAre("año\n", "año\n😀", "año\n😀fin"));
    }
}

TEST_F(EventStreamReaderTest, LongLinesAreTakenAndEndlessOnesAreNot) {
    const std::string longText(10'000'000, 'x');
    EXPECT_TRUE(read(textEvent(longText), 1000) == longText);
    EventStreamReader reader(nullptr, 100);
    EXPECT_THROW(reader.read("data: " + std::string(100, ' ')), APIError);
    EventStreamReader other(nullptr, 100);
    for (int i = 0; i < 10; ++i) other.read(textEvent("ten bytes."));
    EXPECT_THROW(other.read(textEvent("!")), APIError);
}

}  // namespace
}  // namespace dorix
