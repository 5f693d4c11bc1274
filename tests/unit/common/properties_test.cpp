// Reading and writing properties and parameters.
#include "common_sim_fixture.h"

#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

using namespace Pegasus;
using namespace zda_common_test;

namespace
{

class PropertiesTest : public CommonSimTest
{
protected:
    CIMInstance volume()
    {
        CIMInstance inst("ZDA_StorageVolume");
        inst.addProperty(CIMProperty("BlockSize", CIMValue(Uint64(512))));
        inst.addProperty(CIMProperty("Unset64", CIMValue(CIMTYPE_UINT64, false)));
        inst.addProperty(CIMProperty("Usage", CIMValue(Uint16(2))));
        inst.addProperty(CIMProperty("Primordial", CIMValue(true)));
        inst.addProperty(CIMProperty("Names", CIMValue(arrayOf<String>({"a", "b"}))));
        inst.addProperty(
            CIMProperty("Pool", CIMValue(CIMObjectPath("ZDA_DynamicStoragePool.InstanceID=\"p1\""))));
        inst.addProperty(CIMProperty("ElementName", CIMValue(String("vol1"))));
        inst.addProperty(CIMProperty("Caption", CIMValue(CIMTYPE_STRING, false)));
        return inst;
    }
};

TEST_F(PropertiesTest, GetPropertyReadsValuesAndLeavesOutputAloneForNullOrAbsent)
{
    CIMInstance inst = volume();
    Uint64 u64 = 7;
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Unset64", u64), 4);
    EXPECT_EQ(u64, 7u);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "NoSuchProperty", u64), 3);
    EXPECT_EQ(u64, 7u);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "blocksize", u64), 0);  // names ignore case
    EXPECT_EQ(u64, 512u);

    Uint16 usage = 0;
    Boolean primordial = false;
    Array<String> names;
    CIMObjectPath pool;
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Usage", usage), 0);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Primordial", primordial), 0);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Names", names), 0);
    EXPECT_EQ(ZDA_Common::getProperty(inst, "Pool", pool), 0);
    EXPECT_EQ(usage, 2);
    EXPECT_TRUE(primordial);
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(text(names[1]), "b");
    EXPECT_EQ(text(pool.getClassName().getString()), "ZDA_DynamicStoragePool");

    // A value of another type is not converted.
    Uint32 wrongType = 0;
    EXPECT_THROW(ZDA_Common::getProperty(inst, "Usage", wrongType), TypeMismatchException);
}

TEST_F(PropertiesTest, GetParameterResultsForAbsentNullAndRepeatedNames)
{
    const CIMValue nullU16(CIMTYPE_UINT16, false);
    Array<CIMParamValue> params = arrayOf<CIMParamValue>({{"SyncType", CIMValue(Uint16(8))},
        {"Mode", nullU16}, {"WaitForCopyState", nullU16}, {"waitforcopystate", CIMValue(Uint16(4))},
        {"ElementName", CIMValue(String("copy1"))}, {"ElementName", CIMValue(CIMTYPE_STRING, false)}});

    Uint16 value = 99;
    EXPECT_EQ(ZDA_Common::getParameter(params, "Absent", value), 3);
    EXPECT_EQ(value, 99);
    EXPECT_EQ(ZDA_Common::getParameter(params, "Mode", value), 3);  // null alone counts as absent
    EXPECT_EQ(value, 99);
    EXPECT_EQ(ZDA_Common::getParameter(params, "synctype", value), 0);
    EXPECT_EQ(value, 8);
    // A null before a value of the same name: the value is read, and the 4 stays.
    EXPECT_EQ(ZDA_Common::getParameter(params, "WaitForCopyState", value), 4);
    EXPECT_EQ(value, 4);
    // The walk stops at the first value, so a later null does not matter.
    String name;
    EXPECT_EQ(ZDA_Common::getParameter(params, "ElementName", name), 0);
    EXPECT_EQ(text(name), "copy1");
}

TEST_F(PropertiesTest, StringReadersOfInstancesAndPaths)
{
    CIMInstance inst = volume();
    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "ElementName")), "vol1");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "Caption")), "");  // null
    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "Absent")), "");
    EXPECT_FALSE(logged(3, "\tInvalid property name."));

    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "")), "");
    EXPECT_TRUE(logged(3, "\tInvalid property name."));
    zdasim_log_clear();
    EXPECT_EQ(text(ZDA_Common::getStringProperty(CIMInstance(), "ElementName")), "");
    EXPECT_TRUE(logged(3, "\tInvalid property name."));

    EXPECT_EQ(ZDA_Common::getPropertyValue(inst, "Usage"), CIMValue(Uint16(2)));
    EXPECT_TRUE(ZDA_Common::getPropertyValue(inst, "Absent").isNull());
    EXPECT_EQ(ZDA_Common::getPropertyValue(inst, ""), CIMValue(String()));

    // Key bindings: names compare without case; the last match wins.
    CIMObjectPath path = volumePath("first");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "deviceid")), "first");
    EXPECT_EQ(text(ZDA_Common::getStringProperty(path, "CreationClassName")), "");
}

TEST_F(PropertiesTest, WritersTouchOnlyPropertiesTheInstanceHas)
{
    CIMClass cls("ZDA_StorageVolume");
    cls.addProperty(CIMProperty("ElementName", CIMValue(String("default"))));
    cls.addProperty(CIMProperty("BlockSize", CIMValue(Uint64(512))));
    cls.addProperty(CIMProperty("Names", CIMValue(CIMTYPE_STRING, true)));
    CIMInstance inst = ZDA_Common::buildInstanceSkeleton(cls);
    ASSERT_EQ(inst.getPropertyCount(), 3u);
    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "ElementName")), "default");

    ZDA_Common::setPropertyValue(inst, "ElementName", "vol9");  // a literal is a String
    ZDA_Common::setPropertyValue(inst, "BlockSize", Uint64(4096));
    ZDA_Common::setPropertyValue(inst, "NotInClass", String("x"));
    EXPECT_EQ(text(ZDA_Common::getStringProperty(inst, "ElementName")), "vol9");
    EXPECT_EQ(ZDA_Common::getPropertyValue(inst, "BlockSize"), CIMValue(Uint64(4096)));
    EXPECT_EQ(inst.findProperty("NotInClass"), PEG_NOT_FOUND);

    ZDA_Common::setPropertyValueToNull(inst, "BlockSize", CIMTYPE_UINT64);
    CIMValue nulled = ZDA_Common::getPropertyValue(inst, "BlockSize");
    EXPECT_TRUE(nulled.isNull());
    EXPECT_EQ(nulled.getType(), CIMTYPE_UINT64);
    ZDA_Common::setPropertyValueToNull(inst, "NotInClass", CIMTYPE_UINT64);
    EXPECT_EQ(inst.findProperty("NotInClass"), PEG_NOT_FOUND);

    // An embedded instance is added whether or not the property was there.
    CIMInstance setting("ZDA_StorageSetting");
    ZDA_Common::setPropertyValue(inst, "Setting", setting);
    ZDA_Common::setPropertyValue(inst, "Setting", setting);
    EXPECT_NE(inst.findProperty("Setting"), PEG_NOT_FOUND);
    EXPECT_EQ(inst.getPropertyCount(), 4u);
}

}  // namespace
