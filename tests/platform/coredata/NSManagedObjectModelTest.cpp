// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "codecs/plist/PropertyList.h"
#include "platform/coredata/NSManagedObjectModel.h"
#include "tests/support/TemporaryFolder.h"

namespace annivo {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

PropertyList attribute(const char* name, const char* type) {
  return Dictionary{{"name", name}, {"type", type}};
}

Dictionary entity(const char* name, Array attributes, Array relationships = {}) {
  return {{"name", name}, {"attributes", attributes}, {"relationships", relationships}};
}

Dictionary under(const char* superentity, Dictionary entity) {
  entity.emplace("superentity", superentity);
  return entity;
}

struct NSManagedObjectModelTest : testing::Test {
  PosixFileManager files;
  TemporaryFolder folder;

  Result<NSManagedObjectModel> read(const std::string& bytes) {
    folder.writeFile("a.mom", bytes);
    return NSManagedObjectModel::initWithContentsOfURL(files, folder.path("a.mom"));
  }
  Result<NSManagedObjectModel> read(Array entities) {
    return read(xmlPropertyList(Dictionary{{"entities", entities}}));
  }
};

TEST_F(NSManagedObjectModelTest, DescribesAttributesAndRelationships) {
  const auto model =
      read({entity("Date", {attribute("label", "string"), attribute("date", "day")},
                   {Dictionary{{"name", "owner"}, {"destination", "Person"}, {"toMany", false}}}),
            entity("Person", {attribute("flags", "integer"), attribute("changed", "date")},
                   {Dictionary{{"name", "dates"},
                               {"destination", "Date"},
                               {"toMany", true},
                               {"inverse", "owner"}}})});
  ASSERT_TRUE(model.ok()) << model.error().text();
  const auto* date = model->entityForName("Date");
  ASSERT_NE(date, nullptr);
  EXPECT_EQ(date->attributes[0].type, AttributeType::string);
  EXPECT_EQ(date->attributes[1].type, AttributeType::day);
  EXPECT_FALSE(date->relationships[0].toMany);
  const auto* person = model->entityForName("Person");
  ASSERT_NE(person, nullptr);
  EXPECT_EQ(person->attributes[0].type, AttributeType::integer);
  EXPECT_EQ(person->attributes[1].type, AttributeType::date);
  EXPECT_TRUE(person->relationships[0].toMany);
  EXPECT_EQ(person->relationships[0].inverse, "owner");
  EXPECT_EQ(person->relationshipIndex("dates"), 0U);
  EXPECT_EQ(person->relationshipIndex("owner"), std::nullopt);
  EXPECT_EQ(model->entityForName("date"), nullptr);
}

TEST_F(NSManagedObjectModelTest, PutsWhatIsInheritedFirst) {
  const auto model = read({under("Middle", entity("Leaf", {attribute("c", "string")})),
                           under("Root", entity("Middle", {attribute("b", "string")})),
                           entity("Root", {attribute("a", "string")})});
  ASSERT_TRUE(model.ok()) << model.error().text();
  const auto* leaf = model->entityForName("Leaf");
  ASSERT_EQ(leaf->attributes.size(), 3U);
  EXPECT_EQ(leaf->attributeIndex("a"), 0U);
  EXPECT_EQ(leaf->attributeIndex("b"), 1U);
  EXPECT_EQ(leaf->attributeIndex("c"), 2U);
  EXPECT_TRUE(model->isKindOf(*leaf, "Root"));
  EXPECT_TRUE(model->isKindOf(*leaf, "Leaf"));
  EXPECT_FALSE(model->isKindOf(*model->entityForName("Root"), "Leaf"));
}

TEST_F(NSManagedObjectModelTest, NamesTheFileAndTheFaultOfAMalformedModel) {
  const Dictionary plain = entity("A", {});
  const struct {
    const char* name;
    Array entities;
    const char* fault;
  } rows[] = {
      {"entity without a name", {Dictionary{}}, "name"},
      {"entity that is no dictionary", {"A"}, "name"},
      {"two of a name", {plain, plain}, "two A"},
      {"unknown super-entity", {under("B", plain)}, "unknown B"},
      {"own super-entity", {under("A", plain)}, "inherits from itself"},
      {"circle of three",
       {under("B", plain), under("C", entity("B", {})), under("A", entity("C", {}))},
       "inherits from itself"},
      {"circle above", {under("B", plain), under("B", entity("B", {}))}, "inherits from itself"},
      {"super-entity that is no text",
       {Dictionary{{"name", "A"}, {"superentity", 7}}},
       "superentity"},
      {"unknown type", {entity("A", {attribute("x", "colour")})}, "colour"},
      {"attribute without a type", {entity("A", {Dictionary{{"name", "x"}}})}, "type"},
      {"attributes that are no list", {Dictionary{{"name", "A"}, {"attributes", 1}}}, "no list"},
      {"attribute twice", {entity("A", {attribute("x", "day"), attribute("x", "day")})}, "two x"},
      {"inherited attribute again",
       {entity("A", {attribute("x", "day")}), under("A", entity("B", {attribute("x", "day")}))},
       "two x"},
      {"unknown destination",
       {entity("A", {}, {Dictionary{{"name", "r"}, {"destination", "B"}}})},
       "unknown B"},
      {"relationship without a destination",
       {entity("A", {}, {Dictionary{{"name", "r"}}})},
       "destination"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto model = read(row.entities);
    ASSERT_FALSE(model.ok());
    EXPECT_EQ(model.error().kind, Error::Kind::malformed);
    EXPECT_NE(model.error().text().find(folder.path("a.mom")), std::string::npos);
    EXPECT_NE(model.error().text().find(row.fault), std::string::npos) << model.error().text();
  }
}

TEST_F(NSManagedObjectModelTest, TellsAnAbsentFileFromAMalformedOne) {
  const auto absent =
      NSManagedObjectModel::initWithContentsOfURL(files, folder.path("nothing.mom"));
  ASSERT_FALSE(absent.ok());
  EXPECT_EQ(absent.error().kind, Error::Kind::absent);
  for (const char* bytes : {"", "no property list", "<plist version=\"1.0\"><array/></plist>"}) {
    const auto malformed = read(std::string(bytes));
    ASSERT_FALSE(malformed.ok()) << bytes;
    EXPECT_EQ(malformed.error().kind, Error::Kind::malformed);
  }
}

TEST_F(NSManagedObjectModelTest, ReadsAnInheritanceOfTenThousandLevels) {
  Array entities{entity("E0", {})};
  for (int i = 1; i <= 10000; ++i) {
    const std::string name = "E" + std::to_string(i);
    entities.push_back(Dictionary{{"name", name}, {"superentity", "E" + std::to_string(i - 1)}});
  }
  const auto model = read(entities);
  ASSERT_TRUE(model.ok()) << model.error().text();
  EXPECT_TRUE(model->isKindOf(*model->entityForName("E10000"), "E0"));
}

TEST_F(NSManagedObjectModelTest, MergesTheModelsOfABundle) {
  const NSBundle bundle(files, folder.path("B.app"));
  const auto write = [&](const char* name, Array entities) {
    folder.writeFile(std::string("B.app/Contents/Resources/") + name,
                     xmlPropertyList(Dictionary{{"entities", entities}}));
  };
  folder.makeFolder("B.app/Contents/Resources");
  const auto none = NSManagedObjectModel::mergedModelFromBundle(files, bundle);
  ASSERT_TRUE(none.ok());
  EXPECT_TRUE(none->entities().empty());

  write("one.mom", {entity("A", {})});
  write("two.mom", {entity("B", {})});
  const auto both = NSManagedObjectModel::mergedModelFromBundle(files, bundle);
  ASSERT_TRUE(both.ok()) << both.error().text();
  EXPECT_NE(both->entityForName("A"), nullptr);
  EXPECT_NE(both->entityForName("B"), nullptr);

  write("two.mom", {entity("A", {})});
  EXPECT_FALSE(NSManagedObjectModel::mergedModelFromBundle(files, bundle).ok());
}

}  // namespace
}  // namespace annivo
