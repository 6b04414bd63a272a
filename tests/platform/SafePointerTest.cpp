#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "platform/KSRuntimeError.h"
#include "platform/RefCountManager.h"
#include "platform/SafePointer.h"

namespace sptest {

std::atomic<int> g_alive{0};
std::atomic<int> g_deleted{0};

struct Tracked {
    Tracked() { ++g_alive; }
    virtual ~Tracked() {
        --g_alive;
        ++g_deleted;
    }
    int value = 7;
};

struct Derived : Tracked {
    int extra = 9;
};

struct Other {
    virtual ~Other() {}
    int other = 1;
};

// Multiple inheritance: the Other sub-object does not sit at the object's address.
struct Both : Other, Tracked {};

// Not polymorphic: deletion must still use the type first wrapped.
struct PlainBase {
    int x = 1;
};
struct PlainDerived : PlainBase {
    ~PlainDerived() { ++g_deleted; }
};

// Holds a safe pointer to another object: its destruction lets go of that one.
struct Holder {
    SafePointer<Tracked> inner;
};

}  // namespace sptest

using namespace sptest;

namespace {

class SafePointerTest : public ::testing::Test {
protected:
    void SetUp() override {
        g_alive = 0;
        g_deleted = 0;
        m_records = RefCountManager::getInstance().size();
    }
    void TearDown() override {
        EXPECT_EQ(g_alive.load(), 0) << "objects leaked";
        EXPECT_EQ(RefCountManager::getInstance().size(), m_records) << "count records leaked";
    }
    size_t m_records = 0;
};

// Runs f, expects a KSRuntimeError and returns its message.
template <class F>
std::string errorOf(F&& f) {
    try {
        f();
    } catch (const KSRuntimeError& e) {
        return e.what();
    } catch (...) {
        return "<other exception>";
    }
    return "<no exception>";
}

const std::string kTracked = "SafePointer Report:sptest::Tracked ";

}  // namespace

TEST(KSRuntimeErrorTest, CarriesItsMessage) {
    KSRuntimeError e("boom 42");
    EXPECT_STREQ(e.what(), "boom 42");
    EXPECT_EQ(e.getMessage(), "boom 42");
    try {
        throw KSRuntimeError(std::string("as std::exception"));
    } catch (const std::exception& ex) {
        EXPECT_STREQ(ex.what(), "as std::exception");
    }
}

TEST_F(SafePointerTest, DefaultIsEmpty) {
    SafePointer<Tracked> p;
    EXPECT_TRUE(p.isNull());
    EXPECT_FALSE(p);
    EXPECT_FALSE(p.isValid());
    EXPECT_EQ(p.get(), nullptr);
    EXPECT_TRUE(p == nullptr);
    EXPECT_EQ(p.useCount(), 0);
    p.reset();  // harmless
    EXPECT_EQ(p.release(), nullptr);
}

TEST_F(SafePointerTest, OwnsAndDeletesWhenLastGoes) {
    {
        SafePointer<Tracked> p(new Tracked);
        EXPECT_FALSE(p.isNull());
        EXPECT_TRUE(p);
        EXPECT_TRUE(p.isValid());
        EXPECT_EQ(p->value, 7);
        EXPECT_EQ((*p).value, 7);
        EXPECT_EQ(p.useCount(), 1);
        {
            SafePointer<Tracked> q(p);
            EXPECT_EQ(p.useCount(), 2);
            EXPECT_TRUE(p == q);
            SafePointer<Tracked> r;
            r = q;
            EXPECT_EQ(p.useCount(), 3);
        }
        EXPECT_EQ(p.useCount(), 1);
        EXPECT_EQ(g_deleted.load(), 0);
    }
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, TwoPointersFromOneRawPointerShareOneCount) {
    Tracked* raw = new Tracked;
    SafePointer<Tracked> a(raw);
    SafePointer<Tracked> b(raw);
    EXPECT_EQ(a.useCount(), 2);
    EXPECT_EQ(RefCountManager::getInstance().getCount(raw), 2);
    a.reset();
    EXPECT_EQ(g_deleted.load(), 0);
    EXPECT_EQ(b->value, 7);
    b.reset();
    EXPECT_EQ(g_deleted.load(), 1);
    EXPECT_EQ(RefCountManager::getInstance().getCount(raw), 0);
}

TEST_F(SafePointerTest, ConvertingCopySharesTheCount) {
    SafePointer<Derived> d(new Derived);
    SafePointer<Tracked> t(d);
    EXPECT_EQ(d.useCount(), 2);
    EXPECT_EQ(t->value, 7);
    SafePointer<Tracked> t2;
    t2 = d;
    EXPECT_EQ(d.useCount(), 3);
    SafePointer<Tracked> t3(std::move(d));
    EXPECT_TRUE(d.isNull());
    EXPECT_EQ(t3.useCount(), 3);
    t.reset();
    t2.reset();
    EXPECT_EQ(g_deleted.load(), 0);
    t3.reset();
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, PolymorphicObjectIsKeyedByItsMostDerivedAddress) {
    Both* raw = new Both;
    Other* asOther = raw;
    Tracked* asTracked = raw;
    ASSERT_NE(static_cast<void*>(asOther), static_cast<void*>(asTracked));
    SafePointer<Other> o(asOther);
    SafePointer<Tracked> t(asTracked);
    SafePointer<Both> b(raw);
    EXPECT_EQ(b.useCount(), 3);
    o.reset();
    b.reset();
    EXPECT_EQ(g_deleted.load(), 0);
    t.reset();
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, DeletesWithTheTypeFirstWrapped) {
    SafePointer<PlainDerived> d(new PlainDerived);
    SafePointer<PlainBase> b(d);
    d.reset();
    EXPECT_EQ(g_deleted.load(), 0);
    b.reset();  // the last owner is a PlainBase pointer; ~PlainDerived must still run
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, SelfAssignmentKeepsTheCount) {
    SafePointer<Tracked> p(new Tracked);
    SafePointer<Tracked>& alias = p;
    p = alias;
    EXPECT_EQ(p.useCount(), 1);
    SafePointer<Tracked> q(p);
    p = q;
    EXPECT_EQ(p.useCount(), 2);
    p = std::move(alias);
    EXPECT_EQ(p.useCount(), 2);
    EXPECT_EQ(p->value, 7);
}

TEST_F(SafePointerTest, AssignmentLetsGoOfTheOldObject) {
    SafePointer<Tracked> a(new Tracked);
    SafePointer<Tracked> b(new Tracked);
    EXPECT_EQ(g_alive.load(), 2);
    a = b;
    EXPECT_EQ(g_deleted.load(), 1);
    EXPECT_EQ(b.useCount(), 2);
    SafePointer<Tracked> c(new Tracked);
    a = std::move(c);
    EXPECT_TRUE(c.isNull());
    EXPECT_EQ(b.useCount(), 1);
    EXPECT_EQ(a.useCount(), 1);
}

TEST_F(SafePointerTest, ResetWithANewObject) {
    SafePointer<Tracked> p(new Tracked);
    p.reset(new Tracked);
    EXPECT_EQ(g_deleted.load(), 1);
    EXPECT_EQ(g_alive.load(), 1);
    p.reset(nullptr);
    EXPECT_TRUE(p.isNull());
    EXPECT_EQ(g_alive.load(), 0);
}

TEST_F(SafePointerTest, MovingFromAnEmptyPointerIsAllowed) {
    SafePointer<Tracked> empty;
    SafePointer<Tracked> moved(std::move(empty));
    EXPECT_TRUE(moved.isNull());
    auto make = []() {
        SafePointer<Tracked> none;
        return none;
    };
    EXPECT_TRUE(make().isNull());
}

TEST_F(SafePointerTest, ObjectWhoseDestructorLetsGoOfAnotherObject) {
    SafePointer<Holder> h(new Holder);
    h->inner = SafePointer<Tracked>(new Tracked);
    h.reset();
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, ComparisonAndOrdering) {
    SafePointer<Tracked> a(new Tracked);
    SafePointer<Tracked> b(new Tracked);
    SafePointer<Tracked> a2(a);
    SafePointer<Derived> none;
    EXPECT_TRUE(a == a2);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a != nullptr);
    EXPECT_TRUE(nullptr != a);
    EXPECT_TRUE(none == nullptr);
    EXPECT_TRUE(nullptr == none);
    EXPECT_TRUE(a != none);
    EXPECT_NE(a < b, b < a);
    EXPECT_FALSE(a < a2);
}

// ---- misuse reasons ----

TEST_F(SafePointerTest, ConstructFromNullRawPointerThrows) {
    ::testing::internal::CaptureStdout();
    std::string msg = errorOf([] { SafePointer<Tracked> p(nullptr); });
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(msg, kTracked + "Construct from NULL original pointer");
    EXPECT_EQ(printed, msg + "\n");
    Tracked* raw = nullptr;
    EXPECT_EQ(errorOf([raw] { SafePointer<Tracked> p(raw); }), kTracked + "Construct from NULL original pointer");
}

TEST_F(SafePointerTest, CopyFromEmptyThrows) {
    SafePointer<Tracked> empty;
    EXPECT_EQ(errorOf([&] { SafePointer<Tracked> p(empty); }), kTracked + "Construct from NULL <T>pointer");
    SafePointer<Derived> emptyDerived;
    // The converting copy reports the target type.
    EXPECT_EQ(errorOf([&] { SafePointer<Tracked> p(emptyDerived); }), kTracked + "Construct from NULL <T>pointer");
}

TEST_F(SafePointerTest, AssignFromEmptyThrowsAndKeepsTheTarget) {
    SafePointer<Tracked> p(new Tracked);
    SafePointer<Tracked> empty;
    EXPECT_EQ(errorOf([&] { p = empty; }), kTracked + "Assigned NULL <T>pointer");
    EXPECT_EQ(errorOf([&] { p = std::move(empty); }), kTracked + "Assigned NULL <T>pointer");
    SafePointer<Derived> emptyDerived;
    EXPECT_EQ(errorOf([&] { p = emptyDerived; }), kTracked + "Assigned NULL <T>pointer");
    EXPECT_EQ(p->value, 7);
    EXPECT_EQ(p.useCount(), 1);
}

TEST_F(SafePointerTest, UseOfEmptyThrows) {
    SafePointer<Tracked> empty;
    EXPECT_EQ(errorOf([&] { (void)empty->value; }), kTracked + "Use NULL pointer ->");
    EXPECT_EQ(errorOf([&] { (void)(*empty).value; }), kTracked + "Use NULL pointer ->");
}

TEST_F(SafePointerTest, ReleaseHandsTheObjectOverAndLeavesOthersStale) {
    SafePointer<Tracked> a(new Tracked);
    SafePointer<Tracked> b(a);
    SafePointer<Tracked> c(a);
    Tracked* raw = a.release();
    ASSERT_NE(raw, nullptr);
    EXPECT_TRUE(a.isNull());
    EXPECT_FALSE(b.isNull());
    EXPECT_FALSE(b.isValid());
    EXPECT_EQ(b.useCount(), 0);
    EXPECT_EQ(RefCountManager::getInstance().getCount(raw), 0);

    // 1: use of a stale pointer
    EXPECT_EQ(errorOf([&] { (void)b->value; }), kTracked + "Already destructed 1");
    EXPECT_EQ(errorOf([&] { (void)(*b).value; }), kTracked + "Already destructed 1");
    // 2: copy of a stale pointer
    EXPECT_EQ(errorOf([&] { SafePointer<Tracked> d(b); }), kTracked + "Already destructed 2");
    // 3: assignment from a stale pointer
    SafePointer<Tracked> e(new Tracked);
    EXPECT_EQ(errorOf([&] { e = b; }), kTracked + "Already destructed 3");
    EXPECT_EQ(errorOf([&] { e = std::move(c); }), kTracked + "Already destructed 3");
    EXPECT_TRUE(e.isValid());

    // Stale pointers let go without deleting; a release of a stale pointer gives nothing.
    b.reset();
    EXPECT_EQ(c.release(), nullptr);
    EXPECT_EQ(g_deleted.load(), 0);
    delete raw;
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, StalePointerStaysStaleWhenTheAddressIsWrappedAgain) {
    SafePointer<Tracked> a(new Tracked);
    SafePointer<Tracked> stale(a);
    Tracked* raw = a.release();
    SafePointer<Tracked> again(raw);  // counted afresh: a new record for the same address
    EXPECT_EQ(again.useCount(), 1);
    EXPECT_EQ(errorOf([&] { SafePointer<Tracked> d(stale); }), kTracked + "Already destructed 2");
    EXPECT_EQ(again.useCount(), 1);
    stale.reset();
    EXPECT_EQ(g_deleted.load(), 0);
    again.reset();
    EXPECT_EQ(g_deleted.load(), 1);
}

TEST_F(SafePointerTest, CountNotBelongingToThePointerThrowsDirectly) {
    RefCountManager& m = RefCountManager::getInstance();
    int x = 0;
    int y = 0;
    ref_count* r = m.acquire(&x, &x, nullptr);
    EXPECT_EQ(errorOf([&] { m.inc_reference(r, &y); }), "not valid pointer in inc_reference ");
    EXPECT_EQ(errorOf([&] { m.inc_reference(nullptr, &x); }), "not valid pointer in inc_reference ");
    m.inc_reference(r, &x);
    EXPECT_EQ(m.getCount(&x), 2);
    EXPECT_EQ(m.dec_reference(r), 1);
    // Once released, the record no longer belongs to the address.
    ref_count* holder = m.acquire(&x, &x, nullptr);  // the same record, count 2
    ASSERT_EQ(holder, r);
    EXPECT_TRUE(m.detach(holder));
    EXPECT_EQ(m.getCount(&x), 0);
    EXPECT_EQ(errorOf([&] { m.inc_reference(r, &x); }), "not valid pointer in inc_reference ");
    EXPECT_EQ(m.dec_reference(r), 0);  // the last holder frees the record
}

// ---- threads ----

TEST_F(SafePointerTest, ThreadedCopiesKeepTheCountExact) {
    Tracked* raw = new Tracked;
    SafePointer<Tracked> shared(raw);
    const int kThreads = 8;
    const int kRounds = 20000;
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            while (!go.load()) std::this_thread::yield();
            SafePointer<Tracked> mine(shared);
            for (int i = 0; i < kRounds; ++i) {
                SafePointer<Tracked> copy(mine);
                SafePointer<Tracked> fromRaw(raw);
                SafePointer<Tracked> assigned;
                assigned = copy;
                SafePointer<Derived> other(new Derived);
                SafePointer<Tracked> converted(other);
                if ((i + t) % 3 == 0) assigned.reset();
                if (copy->value != 7) std::abort();
            }
        });
    }
    go = true;
    for (auto& th : threads) th.join();
    EXPECT_EQ(shared.useCount(), 1);
    EXPECT_EQ(g_alive.load(), 1);
    EXPECT_EQ(g_deleted.load(), kThreads * kRounds);
    shared.reset();
    EXPECT_EQ(g_alive.load(), 0);
}

TEST_F(SafePointerTest, ThreadedLastReleaseDeletesExactlyOnce) {
    const int kThreads = 6;
    for (int round = 0; round < 200; ++round) {
        std::vector<SafePointer<Tracked>> copies;
        {
            SafePointer<Tracked> p(new Tracked);
            for (int t = 0; t < kThreads; ++t) copies.push_back(p);
        }
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&, t] {
                ++ready;
                while (ready.load() < kThreads) std::this_thread::yield();
                copies[static_cast<size_t>(t)].reset();
            });
        }
        for (auto& th : threads) th.join();
        ASSERT_EQ(g_deleted.load(), round + 1);
    }
}
