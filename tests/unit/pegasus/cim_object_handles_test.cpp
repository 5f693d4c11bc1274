// Reference-handle semantics of the object model: sharing, cloning,
// conversions, uninitialized handles and thread-safe reference counts.
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMObjectAccess.h>
#include <Pegasus/Common/CIMParamValue.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/Exception.h>

#include "sdk_fixtures.h"

using namespace Pegasus;
using namespace sdktest;

namespace
{
CIMInstance makeDisk(const char* name)
{
    CIMInstance inst = makeDiskClass().buildInstance(false, false, CIMPropertyList());
    inst.getProperty(0).setValue(CIMValue(String(name)));
    return inst;
}

String nameOf(const CIMConstInstance& inst)
{
    return inst.getProperty(inst.findProperty(CIMName("Name"))).getValue().toString();
}
}  // namespace

TEST(HandleSharing, CopiesOfAnInstanceSeeEachOthersChanges)
{
    CIMInstance original = makeDisk("d1");
    CIMInstance copy = original;
    CIMObject asObject = original;     // implicit, shares
    CIMConstInstance view = original;  // implicit, shares
    Array<CIMInstance> list;
    list.append(original);

    copy.getProperty(0).setValue(CIMValue(String("d2")));
    EXPECT_EQ(nameOf(original), String("d2"));
    EXPECT_EQ(nameOf(view), String("d2"));

    copy.removeProperty(copy.findProperty(CIMName("Tags")));
    EXPECT_EQ(original.getPropertyCount(), 4u);
    EXPECT_EQ(list[0].getPropertyCount(), 4u);

    asObject.addProperty(CIMProperty(CIMName("Extra"), CIMValue(true)));
    EXPECT_NE(original.findProperty(CIMName("extra")), PEG_NOT_FOUND);

    list[0].setPath(CIMObjectPath("Test_Disk.Name=\"d2\""));
    EXPECT_EQ(original.getPath().getKeyBindings().size(), 1u);

    // Assignment rebinds the handle; it does not copy content into the old object.
    CIMInstance other = makeDisk("x");
    copy = other;
    copy.removeProperty(0);
    EXPECT_EQ(original.getPropertyCount(), 5u);
    EXPECT_EQ(other.getPropertyCount(), 4u);
}

TEST(HandleSharing, CloneIsDeepAndIndependent)
{
    CIMInstance original = makeDisk("d1");
    original.addQualifier(description("q"));
    CIMInstance clone = original.clone();
    EXPECT_TRUE(clone.identical(original));

    clone.getProperty(0).setValue(CIMValue(String("changed")));
    clone.getQualifier(0).setValue(CIMValue(String("changed")));
    clone.removeProperty(1);
    clone.addProperty(CIMProperty(CIMName("Extra"), CIMValue(true)));

    EXPECT_EQ(nameOf(original), String("d1"));
    EXPECT_TRUE(original.getQualifier(0).getValue().equal(CIMValue(String("q"))));
    EXPECT_EQ(original.getPropertyCount(), 5u);
    EXPECT_EQ(original.findProperty(CIMName("Extra")), PEG_NOT_FOUND);
    EXPECT_FALSE(clone.identical(original));

    // A cloned property is detached from its instance.
    CIMProperty detached = original.getProperty(0).clone();
    detached.setValue(CIMValue(String("elsewhere")));
    EXPECT_EQ(nameOf(original), String("d1"));
    EXPECT_NO_THROW(detached.setName(CIMName("Renamed")));
}

TEST(HandleSharing, MovesHandTheObjectOverAndLeaveTheSourceUninitialized)
{
    CIMInstance original = makeDisk("d1");
    CIMInstance keep = original;
    CIMInstance moved(std::move(original));
    EXPECT_TRUE(original.isUninitialized());
    moved.getProperty(0).setValue(CIMValue(String("d2")));
    EXPECT_EQ(nameOf(keep), String("d2"));

    CIMInstance target = makeDisk("x");
    target = std::move(moved);
    EXPECT_TRUE(moved.isUninitialized());
    CIMInstance& alias = target;
    target = std::move(alias);
    EXPECT_EQ(nameOf(target), String("d2"));
    keep = CIMInstance();
    EXPECT_EQ(nameOf(target), String("d2"));

    // Growing the property list moves its handles: every one stays whole.
    CIMInstance wide("Test_Wide");
    for (Uint32 i = 0; i < 40; ++i)
        wide.addProperty(CIMProperty(CIMName(("P" + std::to_string(i)).c_str()), CIMValue(i)));
    for (Uint32 i = 0; i < 40; ++i)
        EXPECT_EQ(wide.getProperty(i).getValue(), CIMValue(i));
}

TEST(HandleSharing, InPlacePropertyReadsSeeTheInstancesOwnProperty)
{
    CIMInstance inst = makeDisk("d1");
    const CIMProperty& inPlace = CIMObjectAccess::property(inst, 0);
    inst.getProperty(0).setValue(CIMValue(String("d2")));
    EXPECT_EQ(inPlace.getValue(), CIMValue(String("d2")));
    EXPECT_THROW(CIMObjectAccess::property(inst, inst.getPropertyCount()), IndexOutOfBoundsException);
    EXPECT_THROW(CIMObjectAccess::property(CIMInstance(), 0), UninitializedObjectException);
}

TEST(HandleConversions, ObjectConvertsOnlyToItsOwnKind)
{
    CIMObject instObj = makeDisk("d1");
    CIMObject classObj = makeDiskClass();

    EXPECT_TRUE(instObj.isInstance());
    EXPECT_TRUE(classObj.isClass());
    EXPECT_THROW(CIMInstance{classObj}, DynamicCastFailedException);
    EXPECT_THROW(CIMClass{instObj}, DynamicCastFailedException);
    EXPECT_THROW(CIMConstInstance{CIMConstObject(classObj)}, DynamicCastFailedException);

    CIMInstance back(instObj);
    back.removeProperty(0);
    EXPECT_EQ(instObj.getPropertyCount(), 4u);

    EXPECT_TRUE(CIMInstance(CIMObject()).isUninitialized());
    EXPECT_TRUE(CIMClass(classObj.clone()).identical(CIMClass(classObj)));
}

TEST(UninitializedHandles, EveryMemberButAssignmentThrows)
{
    CIMInstance inst;
    CIMClass cls;
    CIMObject obj;
    CIMProperty prop;
    CIMConstProperty constProp;
    CIMQualifier qual;
    CIMQualifierDecl decl;
    CIMMethod method;
    CIMParameter param;
    CIMParamValue pv;
    CIMConstInstance constInst;

    EXPECT_TRUE(inst.isUninitialized() && cls.isUninitialized() && obj.isUninitialized() &&
        prop.isUninitialized() && qual.isUninitialized() && decl.isUninitialized() &&
        method.isUninitialized() && param.isUninitialized() && pv.isUninitialized() &&
        constInst.isUninitialized() && constProp.isUninitialized());

    const std::vector<std::function<void()>> calls = {
        [&] { inst.getClassName(); },
        [&] { inst.getPath(); },
        [&] { inst.setPath(CIMObjectPath("Test_Disk")); },
        [&] { inst.addProperty(CIMProperty(CIMName("a"), CIMValue(true))); },
        [&] { inst.findProperty(CIMName("a")); },
        [&] { inst.getPropertyCount(); },
        [&] { inst.removeProperty(0); },
        [&] { inst.clone(); },
        [&] { inst.filter(true, true, CIMPropertyList()); },
        [&] { inst.identical(makeDisk("d")); },
        [&] { makeDisk("d").identical(inst); },
        [&] { constInst.getPropertyCount(); },
        [&] { cls.buildInstance(false, false, CIMPropertyList()); },
        [&] { cls.isAssociation(); },
        [&] { cls.getMethodCount(); },
        [&] { obj.isClass(); },
        [&] { obj.toString(); },
        [&] { prop.getName(); },
        [&] { prop.setValue(CIMValue(true)); },
        [&] { prop.clone(); },
        [&] { constProp.getValue(); },
        [&] { qual.getValue(); },
        [&] { decl.getScope(); },
        [&] { method.getParameterCount(); },
        [&] { param.getType(); },
        [&] { pv.getValue(); },
        [&] { pv.setIsTyped(false); },
        [&] { CIMValue v(inst); },
    };
    for (size_t i = 0; i < calls.size(); ++i)
        EXPECT_THROW(calls[i](), UninitializedObjectException) << "call #" << i;

    // Assignment makes a handle usable; assigning an uninitialized one back releases it.
    inst = makeDisk("d");
    EXPECT_EQ(inst.getPropertyCount(), 5u);
    inst = CIMInstance();
    EXPECT_TRUE(inst.isUninitialized());

    // Null names are refused where a handle would otherwise be created.
    EXPECT_THROW(CIMInstance{CIMName()}, UninitializedObjectException);
    EXPECT_THROW(CIMClass{CIMName()}, UninitializedObjectException);
    EXPECT_THROW(CIMQualifier(CIMName(), CIMValue(true)), UninitializedObjectException);
    EXPECT_THROW(CIMMethod(CIMName(), CIMTYPE_UINT32), UninitializedObjectException);
}

// Copies made, converted and dropped on several threads at once must neither
// lose nor double-count references (checked under the sanitizer builds too).
TEST(HandleThreads, ConcurrentCopiesKeepCountsRight)
{
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    CIMInstance shared = makeDisk("d1");
    CIMClass cls = makeDiskClass();
    CIMParamValue param(String("P"), CIMValue(Uint32(1)));

    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
    {
        workers.emplace_back([shared, cls, param] {
            for (int i = 0; i < rounds; ++i)
            {
                CIMInstance a = shared;
                CIMObject o = a;
                CIMConstInstance c(o);
                CIMConstProperty p = c.getProperty(0);
                Array<CIMInstance> list(2u, a);
                CIMConstClass view = cls;
                CIMParamValue pv = param;
                (void)p;
                (void)view;
                (void)pv;
            }
        });
    }
    for (auto& w : workers)
        w.join();
    EXPECT_EQ(nameOf(shared), String("d1"));
    EXPECT_EQ(shared.getPropertyCount(), 5u);
}

TEST(HandleThreads, LastReleaseMayHappenOnAnyThread)
{
    for (int round = 0; round < 50; ++round)
    {
        std::vector<std::thread> workers;
        {
            CIMInstance inst = makeDisk("d");
            for (int t = 0; t < 3; ++t)
                workers.emplace_back([copy = inst]() mutable {
                    CIMProperty p = copy.getProperty(0);
                    copy = CIMInstance();
                    // The property outlives every instance handle of this thread.
                    EXPECT_EQ(p.getName().getString(), String("Name"));
                });
        }
        for (auto& w : workers)
            w.join();
    }
}
