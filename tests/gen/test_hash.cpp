// The string-keyed hash table: the hash function's exact values, duplicate
// keys, null arguments, random operations against a std::map, out-of-memory.
#include "qmr/hash.h"

#include "platform/alloc.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace
{

// A caller's entry: the key pointer must come first.
struct Entry {
    const char *key;
    int id;
};

TEST(Hash, HashpjwGivesTheSixteenBitWeinbergerValue)
{
    // Values worked out by hand; a 32-bit variant, signed bytes or a missing
    // fold of the top nibble each give different numbers. "abc" is the first
    // to fold (0x6783 -> 0x07E3); "\xFF" shows that bytes are unsigned.
    // clang-format off
    const std::tuple<const char *, int, int> rows[] = { // key, n, hashpjw(key, n)
        {"", 7, 0},                             {"abc", 1, 0},
        {"a", 65536, 97},                       {"ab", 65536, 1650},
        {"abc", 65536, 2019},                   {"abcd", 65536, 3812},
        {"abcd", 7, 4},                         {"hashpjw", 65536, 519},
        {"CLIENT_LOCALE", 65536, 485},          {"CLIENT_LOCALE", 101, 81},
        {"\xFF", 65536, 255},                   {"\x80\x81\x82\x83\x84", 65536, 676},
        {"\x80\x81\x82\x83\x84", INT_MAX, 676}, {nullptr, 7, 0},
        {"abc", 0, 0},                          {"abc", -3, 0}};
    // clang-format on
    for (const auto &[key, n, want] : rows)
        EXPECT_EQ(hashpjw(key, n), want) << (key ? key : "(null)") << " mod " << n;
}

TEST(Hash, EqualKeysStackNewestFirst)
{
    for (int n : {1, 7}) {
        qmr_hashtab_t *t = ghashcreat(n);
        ASSERT_NE(t, nullptr);
        Entry a1{"a", 1}, a2{"a", 2}, b{"b", 3};
        ASSERT_EQ(ghashins(t, &a1), 1);
        ASSERT_EQ(ghashins(t, &b), 1);
        ASSERT_EQ(ghashins(t, &a2), 1);
        EXPECT_EQ(ghashlook(t, "a"), &a2) << n;
        EXPECT_EQ(ghashdel(t, "a"), &a2) << n;
        EXPECT_EQ(ghashlook(t, "a"), &a1) << n;
        EXPECT_EQ(ghashdel(t, "a"), &a1) << n;
        EXPECT_EQ(ghashdel(t, "a"), nullptr) << n;
        EXPECT_EQ(ghashlook(t, "a"), nullptr) << n;
        EXPECT_EQ(ghashlook(t, "b"), &b) << n;
        EXPECT_EQ(ghashlook(t, "B"), nullptr) << "keys compare exactly";
        ghashremove(t); // b's node is freed, b itself is not
        EXPECT_STREQ(b.key, "b");
    }
}

TEST(Hash, BadArgumentsAreHarmless)
{
    for (int n : {0, -1, INT_MIN}) {
        qmr::test_reset_alloc_count();
        EXPECT_EQ(ghashcreat(n), nullptr) << n;
        EXPECT_EQ(qmr::test_alloc_count(), 0) << "a size below one is refused before allocating";
    }
    qmr_hashtab_t *t = ghashcreat(3);
    ASSERT_NE(t, nullptr);
    Entry e{"k", 1};
    Entry nokey{nullptr, 2};
    EXPECT_EQ(ghashins(nullptr, &e), 0);
    EXPECT_EQ(ghashins(t, nullptr), 0);
    EXPECT_EQ(ghashlook(nullptr, "k"), nullptr);
    EXPECT_EQ(ghashdel(nullptr, "k"), nullptr);
    // An entry without a key is kept (and freed with the table) but never found.
    EXPECT_EQ(ghashins(t, &nokey), 1);
    EXPECT_EQ(ghashlook(t, nullptr), nullptr);
    EXPECT_EQ(ghashdel(t, nullptr), nullptr);
    EXPECT_EQ(ghashlook(t, ""), nullptr);
    ghashremove(t);
    ghashremove(nullptr);
}

TEST(Hash, RandomOperationsMatchAMapOfStacks)
{
    const unsigned seed = 20240611;
    std::printf("Hash.RandomOperationsMatchAMapOfStacks seed %u\n", seed);
    std::mt19937 rng(seed);
    // Few, short keys with high bytes and the empty key: many duplicates and
    // collisions.
    std::vector<std::string> keys{""};
    while (keys.size() < 150) {
        std::string k(rng() % 4 + 1, '\0');
        for (char &c : k)
            c = static_cast<char>(rng() % 2 ? 'a' + rng() % 6 : 0x80 + rng() % 0x80);
        keys.push_back(k);
    }
    for (int n : {1, 3, 64, 1009}) {
        SCOPED_TRACE("buckets " + std::to_string(n));
        std::vector<Entry> entries(4000);
        std::map<std::string, std::vector<const Entry *>> oracle;
        qmr_hashtab_t *t = ghashcreat(n);
        ASSERT_NE(t, nullptr);
        std::size_t used = 0;
        for (int step = 0; step < 12000; ++step) {
            const std::string &key = keys[rng() % keys.size()];
            std::vector<const Entry *> &stack = oracle[key];
            const Entry *top = stack.empty() ? nullptr : stack.back();
            unsigned op = rng() % 4;
            if (op < 2 && used < entries.size()) {
                Entry &e = entries[used];
                e = Entry{key.c_str(), static_cast<int>(used++)};
                ASSERT_EQ(ghashins(t, &e), 1);
                stack.push_back(&e);
            } else if (op == 2) {
                ASSERT_EQ(ghashlook(t, key.c_str()), top) << "step " << step;
            } else {
                ASSERT_EQ(ghashdel(t, key.c_str()), top) << "step " << step;
                if (top != nullptr)
                    stack.pop_back();
            }
        }
        for (const auto &[key, stack] : oracle)
            EXPECT_EQ(ghashlook(t, key.c_str()), stack.empty() ? nullptr : stack.back());
        // Every node must sit in the bucket its key hashes to.
        for (int i = 0; i < t->nbuckets; ++i)
            for (const qmr_hashnode_t *node = t->buckets[i]; node != nullptr; node = node->next)
                ASSERT_EQ(hashpjw(static_cast<const Entry *>(node->entry)->key, t->nbuckets), i);
        ghashremove(t);
        for (std::size_t i = 0; i < used; ++i)
            ASSERT_EQ(entries[i].id, static_cast<int>(i)) << "entries are the caller's";
    }
}

TEST(Hash, OutOfMemoryFailsCleanly)
{
    // First the header, then the bucket array. The header must be freed: the
    // sanitizer build's leak check reports it otherwise (repeated, because a
    // stale copy of one pointer can hide one leak from a conservative scan).
    for (int k : {1, 2})
        for (int i = 0; i < 32; ++i) {
            qmr::test_fail_alloc_after(k);
            EXPECT_EQ(ghashcreat(5), nullptr) << "failing allocation " << k;
            qmr::test_fail_alloc_after(0);
        }
    qmr_hashtab_t *t = ghashcreat(5);
    ASSERT_NE(t, nullptr);
    Entry old{"k", 1}, fresh{"k", 2};
    ASSERT_EQ(ghashins(t, &old), 1);
    qmr::test_fail_alloc_after(1);
    EXPECT_EQ(ghashins(t, &fresh), 0);
    qmr::test_fail_alloc_after(0);
    EXPECT_EQ(ghashlook(t, "k"), &old);
    EXPECT_EQ(ghashins(t, &fresh), 1);
    EXPECT_EQ(ghashlook(t, "k"), &fresh);
    ghashremove(t);
}

} // namespace
