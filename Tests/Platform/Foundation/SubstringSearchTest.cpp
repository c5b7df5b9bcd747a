#include "Platform/Foundation/SubstringSearch_p.h"

#include <QByteArray>

#include <functional>
#include <random>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using Finder = std::function<const char *(const char *, const char *, QByteArrayView)>;

std::vector<std::pair<const char *, Finder>> finders()
{
    const auto with = [](InstructionSet instructions) {
        return [instructions](const char *begin, const char *end, QByteArrayView needle) {
            return SubstringSearch::findUsing(instructions, begin, end, needle);
        };
    };
    return {
        {"find", SubstringSearch::find}, {"plain", with(InstructionSet::Plain)}, {"best", with(bestInstructionSet())}};
}

qsizetype place(const Finder &finder, const QByteArray &text, const QByteArray &needle)
{
    // Exactly the promised bytes behind the end, so that the address sanitizer sees one too many.
    const std::vector<char> copy = [&] {
        std::vector<char> bytes(text.begin(), text.end());
        bytes.resize(bytes.size() + size_t(SubstringSearch::Padding), needle.back());
        return bytes;
    }();
    const char *end = copy.data() + text.size();
    const char *found = finder(copy.data(), end, needle);
    return found == end ? -1 : found - copy.data();
}

TEST(SubstringSearch, AnswersTheFirstPlaceInRandomText)
{
    std::mt19937 random(3);
    for (const auto &[name, finder] : finders()) {
        for (int round = 0; round < 20'000; ++round) {
            QByteArray text, needle;
            const int letters = 1 + int(random() % 3);
            for (auto i = random() % 300; i > 0; --i)
                text += char('a' + random() % letters);
            for (auto i = 1 + random() % (round % 2 ? 4 : 80); i > 0; --i)
                needle += char('a' + random() % letters);
            ASSERT_EQ(place(finder, text, needle), text.indexOf(needle))
                << name << " " << text.constData() << " " << needle.constData();
        }
    }
}

TEST(SubstringSearch, FindsANeedleAtEveryPlaceOfAText)
{
    for (const auto &[name, finder] : finders()) {
        for (qsizetype size : {1, 2, 3, 4, 17, 33, 65, 100}) {
            QByteArray needle;
            for (qsizetype i = 0; i < size; ++i)
                needle += char('A' + i % 50);
            for (qsizetype before = 0; before < 140; ++before)
                ASSERT_EQ(place(finder, QByteArray(before, '.') + needle, needle), before) << name << " " << size;
        }
    }
}

TEST(SubstringSearch, TakesNothingThatReachesBehindTheEnd)
{
    for (const auto &[name, finder] : finders()) {
        EXPECT_EQ(place(finder, "aaaa", "aaaaa"), -1) << name; // the padding goes on with "a"
        EXPECT_EQ(place(finder, "", "a"), -1) << name;
        EXPECT_EQ(place(finder, "b", "ba"), -1) << name;
    }
}

TEST(SubstringSearch, FindsZerosAndHighBytes)
{
    for (const auto &[name, finder] : finders()) {
        const QByteArray text("ab\0\xF0\x9F\x8E\xB5\xFF", 8);
        EXPECT_EQ(place(finder, text, QByteArray("\0\xF0", 2)), 2) << name;
        EXPECT_EQ(place(finder, text, QByteArray("\0", 1)), 2) << name;
        EXPECT_EQ(place(finder, text, "\xB5\xFF"), 6) << name;
    }
}

TEST(SubstringSearch, NamesTheRecordsThatHoldTheNeedle)
{
    std::mt19937 random(4);
    for (int round = 0; round < 4000; ++round) {
        const unsigned letters = 1 + random() % 3;
        QByteArray text, needle;
        std::vector<size_t> starts{0};
        std::vector<quint32> expected;
        for (auto i = 1 + random() % (round % 2 ? 3 : 12); i > 0; --i)
            needle += char('a' + random() % letters);
        for (auto record = random() % 40; record > 0; --record) {
            QByteArray content;
            for (auto i = random() % (random() % 8 == 0 ? 200 : 12); i > 0; --i)
                content += char('a' + random() % letters);
            if (content.contains(needle))
                expected.push_back(quint32(starts.size() - 1));
            if (!content.isEmpty())
                content += '|';
            text += content;
            starts.push_back(size_t(text.size()));
        }
        text += QByteArray(SubstringSearch::Padding, needle[0]);
        for (const InstructionSet set : {InstructionSet::Plain, bestInstructionSet()})
            ASSERT_EQ(SubstringSearch::recordsContainingUsing(set, text.constData(), starts, needle), expected)
                << text.constData() << " " << needle.constData();
        ASSERT_EQ(SubstringSearch::recordsContaining(text.constData(), starts, needle), expected);
    }
}

} // namespace
