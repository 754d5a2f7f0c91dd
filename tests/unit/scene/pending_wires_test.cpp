#include "scene/wires.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/support/array_storage.h"

namespace {

// Addresses that nothing is read from.
class Addresses {
  public:
    explicit Addresses(int count) : bytes_(static_cast<std::size_t>(count) * 16) {}
    Control* operator[](int i) { return reinterpret_cast<Control*>(&bytes_[Offset(i)]); }
    INode* Node(int i) { return reinterpret_cast<INode*>(&bytes_[Offset(i)]); }

  private:
    static std::size_t Offset(int i) { return static_cast<std::size_t>(i) * 16; }

    std::vector<char> bytes_;
};

WireEnd End(Control* wire, INode* node, int driver = 0) {
    return {node, 1, 2, wire, driver, 0.5f, 0.25f, 2};
}

TEST(PendingWires, GivesBackWhatWasAdded) {
    Addresses at(5);
    PendingWires pending;
    pending.AddChannel(at[0], at.Node(3), 2, 1);
    pending.AddLink(at[1], End(at[2], at.Node(4), 7));
    EXPECT_EQ(pending.Count(), 2);
    WireEnd end;
    ASSERT_TRUE(pending.Take(at[0], at[1], end));
    EXPECT_EQ(end.node, at.Node(3));
    EXPECT_EQ(end.part, 2);
    EXPECT_EQ(end.component, 1);
    EXPECT_EQ(end.wire, nullptr);
    ASSERT_TRUE(pending.Take(at[2], at[1], end));
    EXPECT_EQ(end.node, at.Node(4));
    EXPECT_EQ(end.part, 1);
    EXPECT_EQ(end.component, 2);
    EXPECT_EQ(end.wire, at[2]);
    EXPECT_EQ(end.driver, 7);
    EXPECT_EQ(end.weight, 0.5f);
    EXPECT_EQ(end.listWeight, 0.25f);
    EXPECT_EQ(end.linkKind, 2);
    EXPECT_EQ(pending.Count(), 0);
    EXPECT_FALSE(pending.Take(at[2], at[1], end));
    EXPECT_FALSE(pending.Take(at[0], at[1], end));
}

TEST(PendingWires, BothKeysCount) {
    Addresses at(4);
    PendingWires pending;
    pending.AddLink(at[1], End(at[0], at.Node(3)));
    WireEnd end;
    EXPECT_FALSE(pending.Take(at[1], at[0], end));
    EXPECT_FALSE(pending.Take(at[0], at[2], end));
    EXPECT_FALSE(pending.TakeBySecond(at[0], end));
    EXPECT_TRUE(pending.TakeBySecond(at[1], end));
    EXPECT_FALSE(pending.TakeBySecond(at[1], end));
    EXPECT_FALSE(pending.Take(at[0], at[1], end));
}

TEST(PendingWires, TheOldestGoesFirst) {
    Addresses at(10);
    PendingWires pending;
    pending.AddChannel(at[0], at.Node(2), 0, 0);
    pending.AddLink(at[1], End(at[0], at.Node(3)));
    pending.AddLink(at[1], End(at[0], at.Node(4)));
    pending.AddChannel(at[0], at.Node(5), 0, 0);
    pending.AddLink(at[1], End(at[9], at.Node(6)));
    pending.AddLink(at[1], End(at[0], at.Node(7)));
    WireEnd end;
    for (const int node : {2, 3}) {
        ASSERT_TRUE(pending.Take(at[0], at[1], end));
        EXPECT_EQ(end.node, at.Node(node));
    }
    for (const int node : {4, 6, 7}) {
        ASSERT_TRUE(pending.TakeBySecond(at[1], end));
        EXPECT_EQ(end.node, at.Node(node));
    }
    ASSERT_TRUE(pending.Take(at[0], at[1], end));
    EXPECT_EQ(end.node, at.Node(5));
    EXPECT_EQ(pending.Count(), 0);
}

// The list as it is described, searched from its beginning.
class Model {
  public:
    struct Entry {
        Control* first;
        Control* second;
        INode* node;
    };

    void Add(Control* first, Control* second, INode* node) {
        entries_.push_back({first, second, node});
    }
    INode* Take(Control* first, Control* second) {
        return TakeIf([=](const Entry& entry) {
            return entry.first == first && (entry.second == NULL || entry.second == second);
        });
    }
    INode* TakeBySecond(Control* second) {
        return TakeIf([=](const Entry& entry) { return entry.second == second; });
    }
    int Count() const { return static_cast<int>(entries_.size()); }

  private:
    template <class Matches>
    INode* TakeIf(Matches matches) {
        const auto found = std::find_if(entries_.begin(), entries_.end(), matches);
        if (found == entries_.end()) {
            return NULL;
        }
        INode* const node = found->node;
        entries_.erase(found);
        return node;
    }

    std::vector<Entry> entries_;
};

TEST(PendingWires, AgreesWithASearchOfTheList) {
    std::mt19937 random(7);
    for (const int controllers : {2, 5, 40}) {
        constexpr int kSteps = 6000;
        Addresses at(std::max(controllers, kSteps));
        PendingWires pending;
        Model model;
        for (int step = 0; step < kSteps; ++step) {
            Control* const a = at[static_cast<int>(random() % controllers)];
            Control* const b = at[static_cast<int>(random() % controllers)];
            INode* const node = at.Node(step);
            WireEnd end = {};
            INode* expected = NULL;
            switch (random() % 5) {
                case 0:
                    pending.AddChannel(a, node, 0, 0);
                    model.Add(a, NULL, node);
                    break;
                case 1:
                case 2:
                    pending.AddLink(b, End(a, node));
                    model.Add(a, b, node);
                    break;
                case 3:
                    expected = model.Take(a, b);
                    ASSERT_EQ(pending.Take(a, b, end), expected != NULL) << step;
                    break;
                default:
                    expected = model.TakeBySecond(b);
                    ASSERT_EQ(pending.TakeBySecond(b, end), expected != NULL) << step;
            }
            ASSERT_EQ(end.node, expected) << step;
            ASSERT_EQ(pending.Count(), model.Count()) << step;
        }
    }
}

// ---------------------------------------------------------------- cost

constexpr int kNodes = 10000;

TEST(PendingWiresCost, ChannelsWithoutWiresAreNotSearched) {
    Addresses at(9 * kNodes);
    PendingWires pending;
    WireEnd end;
    for (int i = 0; i < 9 * kNodes; ++i) {
        ASSERT_FALSE(pending.TakeBySecond(at[i], end));
        pending.AddChannel(at[i], at.Node(i), 0, 0);
    }
    EXPECT_EQ(pending.Count(), 9 * kNodes);
    EXPECT_EQ(pending.NumVisited(), 0u);
}

TEST(PendingWiresCost, AChannelTakesLessThan100Bytes) {
    for (const int channels : {1000, 16385, 24577, 49153, 65537, 9 * kNodes, 98305, 131073}) {
        Addresses at(channels);
        const ArrayStorage storage;
        PendingWires pending;
        for (int i = 0; i < channels; ++i) {
            pending.AddChannel(at[i], at.Node(i), 0, 0);
        }
        EXPECT_LT(storage.Peak(), 100u * static_cast<unsigned>(channels)) << channels;
        EXPECT_GE(storage.Peak(), 24u * static_cast<unsigned>(channels)) << channels;
    }
}

TEST(PendingWiresCost, FindingADriverLooksAtFewRecords) {
    Addresses at(2 * kNodes);
    PendingWires pending;
    for (int i = 0; i < kNodes; ++i) {
        pending.AddChannel(at[i], at.Node(i), 0, 0);
    }
    WireEnd end;
    for (int i = 0; i < kNodes; ++i) {
        ASSERT_TRUE(pending.Take(at[kNodes - 1 - i], at[kNodes + i], end));
        ASSERT_EQ(end.node, at.Node(kNodes - 1 - i));
    }
    EXPECT_LE(pending.NumVisited(), 4u * kNodes);
}

// All records have one end in common; the other ends take them in an order of their own.
TEST(PendingWiresCost, ManyWiresOfOneController) {
    for (const bool backwards : {false, true}) {
        Addresses at(kNodes + 1);
        Control* const hub = at[kNodes];
        PendingWires ofHub, toHub;
        for (int i = 0; i < kNodes; ++i) {
            ofHub.AddLink(at[i], End(hub, at.Node(i)));
            toHub.AddLink(hub, End(at[i], at.Node(i)));
        }
        WireEnd end;
        for (int i = 0; i < kNodes; ++i) {
            const int k = backwards ? kNodes - 1 - i : i;
            ASSERT_TRUE(ofHub.Take(hub, at[k], end));
            ASSERT_EQ(end.node, at.Node(k));
            if (i % 2 == 0) {
                ASSERT_TRUE(toHub.Take(at[k], hub, end));
                ASSERT_EQ(end.node, at.Node(k));
            }
        }
        for (int i = 0; i < kNodes / 2; ++i) {
            ASSERT_TRUE(toHub.TakeBySecond(hub, end));
        }
        EXPECT_FALSE(toHub.TakeBySecond(hub, end));
        EXPECT_LE(ofHub.NumVisited(), 4u * kNodes);
        EXPECT_LE(toHub.NumVisited(), 6u * kNodes);
    }
}

TEST(PendingWiresCost, ManyRecordsOfOnePair) {
    Addresses at(2 + kNodes);
    PendingWires pending;
    for (int i = 0; i < kNodes; ++i) {
        pending.AddLink(at[1], End(at[0], at.Node(2 + i)));
    }
    WireEnd end;
    for (int i = 0; i < kNodes; ++i) {
        ASSERT_TRUE(i % 2 == 0 ? pending.Take(at[0], at[1], end)
                               : pending.TakeBySecond(at[1], end));
        ASSERT_EQ(end.node, at.Node(2 + i));
    }
    EXPECT_LE(pending.NumVisited(), 4u * kNodes);
}

TEST(PendingWires, MissingMemoryIsThrown) {
    Addresses at(2);
    int failing = 0;
    for (bool done = false; !done; ++failing) {
        const ArrayStorage storage(failing);
        try {
            PendingWires pending;
            pending.AddChannel(at[0], at.Node(1), 0, 0);
            pending.AddLink(at[0], End(at[1], at.Node(1)));
            done = true;
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(done, storage.Requests() <= failing);
    }
    EXPECT_GT(failing, 3);
}

}  // namespace
