#include "foundation/memory_testing.h"
#include "tests/cab/registry_support.h"

namespace {

using namespace bag_test;

/// A bag that was saved, then changed in every way, and a key that others changed since.
struct Scene {
    Scene() : bag(MakeBag()) {
        DataItem& root = *bag->GetRootItem();
        for (const WCHAR* const path : {TEXT("n"), TEXT("gone"), TEXT("l[0]"), TEXT("l[1]"),
                                        TEXT("sub.n"), TEXT("sub.more.n"), TEXT("old.n")}) {
            EXPECT_TRUE(SetInt(MakePath(root, path, Kind::Int), 1));
        }
        EXPECT_TRUE(MakePath(root, TEXT("s"), Kind::Stream) &&
                    MakePath(root, TEXT("t"), Kind::String)->SetText(TEXT("text")));
        EXPECT_EQ(Save(root, false), S_OK);
        EXPECT_EQ(Load(root), S_OK);
        const DWORD number = 9;
        RegSetValueExW(OpenBagKey(TEXT("sub")).Get(), TEXT("i.n"), 0, REG_DWORD,
                       reinterpret_cast<const BYTE*>(&number), sizeof number);
        saved = DumpBag();
        DataDictionary& keys = *root.AsDictionary();
        EXPECT_TRUE(SetInt(keys.Find(TEXT("n")), 2) && SetInt(FindPath(root, TEXT("l[0]")), 2));
        EXPECT_TRUE(SetInt(MakePath(root, TEXT("new.n"), Kind::Int), 2));
        EXPECT_TRUE(keys.Find(TEXT("l"))->AsArray()->InsertAt(0, Kind::Int));
        keys.Drop(TEXT("gone"));
        keys.Drop(TEXT("old"));
        root.SetFlags(ItemChildrenRemoved, ItemChildrenRemoved);
    }
    DataItem& Root() { return *bag->GetRootItem(); }

    Bag bag;
    Lines saved;
};

/// Runs `act` on a fresh scene with each request for memory and, where it can be, each call of the
/// system failing once; `check` sees how it ended.
template <class Act, class Check>
void WalkScenes(Act act, Check check) {
    const test_support::TestProfile profile;
    for (const bool isMemory : {true, false}) {
        if (!isMemory && !platform::testing::kOwnsTheSystem) continue;
        bool isMet = true;
        for (unsigned n = 1; isMet && n < 400; ++n) {
            SCOPED_TRACE(testing::Message() << (isMemory ? "request " : "call ") << n);
            Scene scene;
            HRESULT result = S_OK;
            if (isMemory) {
                AUX::testing::AllocationWatch watch;
                watch.FailOnce(n);
                result = act(scene.Root());
                isMet = watch.Failures() > 0;
            } else {
                const platform::testing::InjectedFault fault("*", n, ERROR_ACCESS_DENIED);
                result = act(scene.Root());
                isMet = fault.HasFired();
            }
            check(scene, result);
            if (testing::Test::HasFailure()) return;
        }
        EXPECT_FALSE(isMet) << "no end";
    }
}

void ExpectNextSaveToWriteAll(Scene& scene) {
    const HRESULT result = Save(scene.Root(), true);
    EXPECT_TRUE(result == S_OK || result == S_FALSE) << result;
    EXPECT_EQ(Values(DumpBag(), scene.Root()), Values(LayoutOf(scene.Root()), scene.Root()));
}

TEST(RegistryFaults, AFullSaveWritesAllOrNothing) {
    const bool isTransacted = !test_support::RunsUnderWine();
    WalkScenes([](DataItem& root) { return Save(root, false); },
               [&](Scene& scene, HRESULT result) {
                   if (SUCCEEDED(result)) {
                       EXPECT_EQ(DumpBag(), LayoutOf(scene.Root()));
                   } else if (isTransacted) {
                       EXPECT_EQ(DumpBag(), scene.saved);
                   }
                   ExpectNextSaveToWriteAll(scene);
               });
}

TEST(RegistryFaults, AnIncrementalSaveLosesNothing) {
    for (const bool trusts : {false, true}) {
        WalkScenes([&](DataItem& root) { return Save(root, true, trusts); },
                   [&](Scene& scene, HRESULT) { ExpectNextSaveToWriteAll(scene); });
    }
}

TEST(RegistryFaults, ALoadLosesNothingOfTheBag) {
    WalkScenes(
        [](DataItem& root) {
            const Lines before = LayoutOf(root);
            const HRESULT result = Load(root);
            if (result == ResultOf(ERROR_ACCESS_DENIED)) {
                EXPECT_EQ(LayoutOf(root), before);
            }
            return result;
        },
        [](Scene& scene, HRESULT result) {
            EXPECT_TRUE(result == S_OK || FAILED(result));
            EXPECT_TRUE(FindPath(scene.Root(), TEXT("new.n")));
            ExpectNextSaveToWriteAll(scene);
        });
}

}  // namespace
