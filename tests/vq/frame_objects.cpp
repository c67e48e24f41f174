// Bodies, handles, the tracked heap and object lists.
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "vq/frame/objlist.h"

using namespace vqtest;

namespace {

int gBodies = 0;
int gCloses = 0;

class ProbeBody : public VQBody {
 public:
  ProbeBody() { ++gBodies; }
  ~ProbeBody() override { --gBodies; }
  VQSTATUS Close() override {
    ++gCloses;
    return VQ_OK;
  }
  VQCLASSID GetClassID() const override { return VQCLASSID_VQBODY; }
};

class ProbeHandle : public VQSmartPtr {
 public:
  ProbeHandle() = default;
  explicit ProbeHandle(VQBody* body) : VQSmartPtr(body) {}
  ProbeHandle& operator=(VQBody* body) {
    VQSmartPtr::operator=(body);
    return *this;
  }
  VQCLASSID GetClassID() const override { return VQCLASSID_VQSMARTPTR; }
  std::int32_t Count() const { return Body->GetRefCount(); }
};

class ProbeObject : public VQQuillonClass {
 public:
  VQCLASSID GetClassID() const override { return VQCLASSID_VQQUILLONCLASS; }
};

class Objects : public ::testing::Test {
 protected:
  Objects() { gBodies = gCloses = 0; }
};

TEST_F(Objects, HandlesCountTheirBody) {
  auto* body = new ProbeBody;
  ProbeHandle first(body);
  {
    const ProbeHandle second(first);
    EXPECT_EQ(first.Count(), 2);
  }
  first = body;  // raw self-assignment
  EXPECT_EQ(first.Count(), 1);
  EXPECT_EQ(gBodies, 1);
  first = nullptr;
  EXPECT_EQ(gBodies, 0);
  EXPECT_EQ(first.DeleteBody(), 0);
  first = new ProbeBody;
  EXPECT_EQ(first.DeleteBody(), 1);
  EXPECT_EQ(first.DeleteBody(), 0);
}

TEST_F(Objects, ReleaseWithoutCountIsAnAssertion) {
  const std::unique_ptr<ProbeBody> body(new ProbeBody);
  EXPECT_EQ(StatusOf([&] { body->Release(); }), VQERR_ASSERTION_FAILED);
  char text[600];
  VQGetErrorMessageText(VQERR_ASSERTION_FAILED, text, sizeof text);
  EXPECT_STREQ(text, "Assertion failed in file VQCOMMON at line 349.\n\nExpression: RefCount > 0\n\n");
}

TEST_F(Objects, ClassNames) {
  EXPECT_EQ(VQGetClassName(VQCLASSID_NONE), nullptr);
  EXPECT_STREQ(VQGetClassName(VQCLASSID_VQACL), "VQACL");
  EXPECT_STREQ(VQGetClassName(static_cast<VQCLASSID>(287)), "VQDatetimes");
  EXPECT_EQ(VQGetClassName(static_cast<VQCLASSID>(288)), nullptr);
}

TEST_F(Objects, HeapKnowsItsBlocks) {
  VQDelete(nullptr);
  const unsigned long before = vq::CountTrackedObjects();
  auto* object = new ProbeObject;
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object) % 16, 0u);
  EXPECT_EQ(object->IsOnHeap(), 1);
  EXPECT_EQ(vq::CountTrackedObjects(), before + 1);
  delete object;
  EXPECT_EQ(vq::CountTrackedObjects(), before);
  struct {
    std::uint32_t Words[8] = {};
  } stack;
  EXPECT_EQ(StatusOf([&] { VQDelete(&stack.Words[4]); }), VQERR_NOT_ALLOCATED_BY_VQNEW);
}

TEST_F(Objects, EndWalkClosesHeldBodiesAndDestroysTheRest) {
  ASSERT_EQ(vq::CountTrackedObjects(), 0u);
  ProbeHandle held(new ProbeBody);
  new ProbeBody;
  new ProbeObject;
  EXPECT_EQ(vq::VQDeleteAllObjects(), 3u);
  EXPECT_EQ(gBodies, 1);
  EXPECT_EQ(gCloses, 1);
  EXPECT_EQ(vq::VQDeleteAllObjects(), 0u);
  EXPECT_EQ(held.DeleteBody(), 1);  // it has left the list of blocks by then
  EXPECT_EQ(vq::CountTrackedObjects(), 0u);
}

class AllocatingBody : public ProbeBody {
 public:
  VQSTATUS Close() override {
    ++gCloses;
    StatusSeen = StatusOf([] { delete new ProbeObject; });
    throw StatusSeen;
  }
  static inline VQSTATUS StatusSeen = 0;
};

TEST_F(Objects, NothingIsAllocatedDuringTheWalkAndAThrowDoesNotEndIt) {
  const ProbeHandle first(new AllocatingBody);
  const ProbeHandle second(new AllocatingBody);
  EXPECT_EQ(vq::VQDeleteAllObjects(), 2u);
  EXPECT_EQ(gCloses, 2);
  EXPECT_EQ(AllocatingBody::StatusSeen, VQERR_CANT_ALLOCATE_IN_DELETE_ALL);
  EXPECT_EQ(first.Count(), 1);
  delete new ProbeObject;
}

TEST_F(Objects, ListRefusals) {
  VQObjectList list;
  VQObjectList other;
  ProbeObject on_stack;
  auto* object = new ProbeObject;
  EXPECT_EQ(list.AddObject(nullptr), VQERR_NULL_POINTER);
  EXPECT_EQ(list.AddObject(&on_stack), VQERR_NOT_ON_HEAP);
  EXPECT_EQ(list.AddObject(object), VQ_OK);
  EXPECT_EQ(list.AddObject(object), VQERR_ALREADY_IN_LIST);
  EXPECT_EQ(other.AddObject(object), VQERR_ALREADY_IN_LIST);
  EXPECT_EQ(other.RemoveObject(object), VQERR_NOT_IN_LIST);
  EXPECT_EQ(other.GetNext(nullptr), nullptr);
  EXPECT_EQ(list.GetNext(object), nullptr);
  const vq::ThrowScope scope;
  EXPECT_THROW(other.RemoveObject(object), VQSTATUS);
}

TEST_F(Objects, ListKeepsAnEmptyElementOfADeadObject) {
  VQObjectList list;
  auto* first = new ProbeObject;
  auto* second = new ProbeObject;
  list.AddObject(first);
  list.AddObject(second);
  delete first;
  EXPECT_EQ(list.GetCount(), 2u);
  EXPECT_EQ(list.GetFirst(), nullptr);
  EXPECT_EQ(list.GetPrevious(second), nullptr);
  EXPECT_EQ(list.DeleteObject(second), VQ_OK);
  list.DeleteAllObjects();
  EXPECT_EQ(list.GetCount(), 0u);
}

TEST_F(Objects, ListClosesBodiesThatHandlesHold) {
  auto* body = new ProbeBody;
  ProbeHandle held(body);
  auto* throwing = new AllocatingBody;
  const ProbeHandle held_too(throwing);
  {
    VQObjectList list;
    list.AddObject(body);
    list.AddObject(new ProbeBody);
    list.AddObject(throwing);
    EXPECT_EQ(gBodies, 3);
  }
  EXPECT_EQ(gBodies, 2);
  EXPECT_EQ(gCloses, 2);
  VQObjectList other;
  EXPECT_EQ(other.AddObject(body), VQ_OK);  // in no list any more
}

class SortedList : public Objects {
 protected:
  VQQuillonClass* Add(unsigned long key) {
    auto* object = new ProbeObject;
    EXPECT_EQ(List.AddObject(object, key), VQ_OK);
    return object;
  }
  std::vector<unsigned long> Keys() const {
    std::vector<unsigned long> keys;
    for (auto* object = List.GetFirst(); object != nullptr; object = List.GetNext(object)) {
      unsigned long key = 0;
      EXPECT_EQ(List.GetKey(object, &key), VQ_OK);
      keys.push_back(key);
    }
    return keys;
  }
  VQSortedObjectList List;
};

TEST_F(SortedList, OrdersByKey) {
  const auto* nine = Add(9);
  const auto* five = Add(5);
  const auto* seven = Add(7);
  const auto* newer_seven = Add(7);
  const auto* newer_nine = Add(9);
  EXPECT_EQ(Keys(), (std::vector<unsigned long>{5, 7, 7, 9, 9}));
  EXPECT_EQ(List.GetNext(five), newer_seven);  // newest in front
  EXPECT_EQ(List.GetNext(newer_seven), seven);
  EXPECT_EQ(List.GetNext(nine), newer_nine);  // but at the tail
  EXPECT_EQ(List.FindObject(6), nullptr);
  EXPECT_EQ(List.FindObject(10), nullptr);
}

TEST_F(SortedList, KeysChangeOnlyInOrder) {
  Add(5);
  auto* seven = Add(7);
  Add(9);
  EXPECT_EQ(List.SetKey(seven, 9), VQ_OK);
  EXPECT_EQ(List.SetKey(seven, 5), VQ_OK);
  EXPECT_EQ(List.SetKey(seven, 10), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(List.SetKey(seven, 4), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(List.DeleteObjectByKey(6), VQWARN_NOT_FOUND);
  EXPECT_EQ(List.DeleteObjectByKey(9), VQ_OK);
  EXPECT_EQ(List.GetGreatestKey(), 5u);
  VQObjectList& plain = List;
  EXPECT_EQ(plain.AddObject(seven), VQERR_SORT_KEY_REQUIRED);
}

}  // namespace
