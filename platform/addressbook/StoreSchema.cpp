// SPDX-License-Identifier: MIT
#include "platform/addressbook/StoreSchema.h"

#include <algorithm>
#include <array>
#include <span>

namespace annivo {
namespace {

using enum StoreGeneration;

struct EntityRow {
  std::string_view name;
  std::string_view super = "";
  StoreGeneration from = olderA;
  StoreGeneration until = current;
};

constexpr std::array kEntities{
    EntityRow{"ABCDAddressingGrammar", "", current},
    EntityRow{"ABCDAlertTone", "", current},
    EntityRow{"ABCDCalendarURI"},
    EntityRow{"ABCDContactDate"},
    EntityRow{"ABCDContactIndex"},
    EntityRow{"ABCDCustomProperty"},
    EntityRow{"ABCDCustomPropertyValue"},
    EntityRow{"ABCDDateComponents", "", olderB},
    EntityRow{"ABCDDeletedRecordLog"},
    EntityRow{"ABCDDistributionListConfig"},
    EntityRow{"ABCDEmailAddress"},
    EntityRow{"ABCDLikeness", "", olderB},
    EntityRow{"ABCDMessagingAddress"},
    EntityRow{"ABCDNote"},
    EntityRow{"ABCDPhoneNumber"},
    EntityRow{"ABCDPostalAddress"},
    EntityRow{"ABCDRecord"},
    EntityRow{"ABCDAbstractGroup", "ABCDRecord"},
    EntityRow{"ABCDGroup", "ABCDAbstractGroup"},
    EntityRow{"ABCDSubscribedGroup", "ABCDGroup"},
    EntityRow{"ABCDSmartGroup", "ABCDAbstractGroup"},
    // The older generations number contacts one higher than the entities we know of would have it.
    EntityRow{"", "", olderA, olderB},
    EntityRow{"ABCDContact", "ABCDRecord"},
    EntityRow{"ABCDSubscribedContact", "ABCDContact"},
    EntityRow{"ABCDInfo", "ABCDRecord"},
    EntityRow{"CNCDContainer", "ABCDRecord", current},
    EntityRow{"ABCDRelatedName"},
    EntityRow{"ABCDRemoteLocation"},
    EntityRow{"ABCDService"},
    EntityRow{"ABCDSocialProfile"},
    EntityRow{"ABCDUnknownProperty"},
    EntityRow{"ABCDURLAddress"},
    EntityRow{"CNCDChangeHistoryClient", "", current},
    EntityRow{"CNCDProviderMetadata", "", current},
    EntityRow{"CNCDUnifiedContactInfo", "", current},
};

// Columns in the order of the store: integers, moments, texts, data. What only the current
// generation has follows what all have.
struct Columns {
  std::string_view type;
  std::string_view always;
  std::string_view current = "";
};

constexpr std::array kRecordColumns{
    Columns{"INTEGER",
            "ZCREATIONDATEYEAR ZDISPLAYFLAGS ZMODIFICATIONDATEYEAR ZSYNCSTATUS ZBIRTHDAYYEAR "
            "ZCONTACTINDEX ZNOTE ZSHARECOUNT ZSYNCCOUNT ZVERSION ZINFO ZME Z{contact}_ME",
            "ZIOSLEGACYIDENTIFIER ZCONTAINER ZEXTERNALGROUPBEHAVIOR ZPREFERREDFORLINKNAME "
            "ZPREFERREDFORLINKPHOTO ZPRIVACYFLAGS ZCONTAINER1 ZCONTAINERWHERECONTACTISME "
            "ZLUNARBIRTHDAYCOMPONENTS ZASSISTANTSYNCANCHOR ZCONTAINER2 ZGUARDIANFLAGS ZISALL "
            "ZTYPE ZPROVIDERMETADATA"},
    Columns{"TIMESTAMP", "ZCREATIONDATE ZMODIFICATIONDATE ZBIRTHDAY", "ZLASTSYNCDATE"},
    Columns{"FLOAT", "ZCREATIONDATEYEARLESS ZMODIFICATIONDATEYEARLESS ZBIRTHDAYYEARLESS"},
    Columns{"VARCHAR",
            "ZUNIQUEID ZNAME ZNAMENORMALIZED ZTMPREMOTELOCATION ZCROPRECT ZCROPRECTID ZDEPARTMENT "
            "ZFIRSTNAME ZIMAGEREFERENCE ZIMAGETYPE ZJOBTITLE ZLASTNAME ZMAIDENNAME ZMIDDLENAME "
            "ZNICKNAME ZORGANIZATION ZPHONETICFIRSTNAME ZPHONETICLASTNAME ZPHONETICMIDDLENAME "
            "ZSORTINGFIRSTNAME ZSORTINGLASTNAME ZSUFFIX ZTITLE ZTMPHOMEPAGE ZCREATEDVERSION "
            "ZLASTDOTMACACCOUNT ZLASTSAVEDVERSION ZSYNCANCHOR ZREMOTELOCATION ZSERIALNUMBER",
            "ZEXTERNALCOLLECTIONPATH ZEXTERNALFILENAME ZEXTERNALHASH ZEXTERNALIMAGEURI "
            "ZEXTERNALMODIFICATIONTAG ZEXTERNALURI ZEXTERNALUUID ZIDENTITYUNIQUEID ZLINKID "
            "ZPHONEMEDATA ZPHONETICORGANIZATION ZEXTERNALIDENTIFIER ZNAME1 ZPROVIDERIDENTIFIER"},
    Columns{"BLOB", "ZMODIFIEDUNIQUEIDSDATA ZSEARCHELEMENTDATA",
            "ZEXTERNALREPRESENTATION ZCROPRECTHASH ZIMAGEDATA ZIMAGEHASH ZTHUMBNAILIMAGEDATA"},
};

constexpr std::array kDateColumns{
    Columns{"INTEGER", "ZDATEYEAR ZISPRIMARY ZISPRIVATE ZORDERINGINDEX ZOWNER Z{contact}_OWNER",
            "ZIOSLEGACYIDENTIFIER"},
    Columns{"TIMESTAMP", "ZDATE"},
    Columns{"FLOAT", "ZDATEYEARLESS"},
    Columns{"VARCHAR", "ZLABEL ZUNIQUEID"},
};

constexpr std::array kEmailColumns{
    Columns{"INTEGER", "ZISPRIMARY ZISPRIVATE ZORDERINGINDEX ZOWNER Z{contact}_OWNER",
            "ZIOSLEGACYIDENTIFIER"},
    Columns{"VARCHAR", "ZADDRESS ZADDRESSNORMALIZED ZLABEL ZUNIQUEID"},
};

constexpr std::array kPhoneColumns{
    Columns{"INTEGER", "ZISPRIMARY ZISPRIVATE ZORDERINGINDEX ZOWNER Z{contact}_OWNER",
            "ZIOSLEGACYIDENTIFIER"},
    Columns{"VARCHAR", "ZFULLNUMBER ZLABEL ZLASTFOURDIGITS ZUNIQUEID"},
};

constexpr std::array kNoteColumns{
    Columns{"INTEGER", "ZCONTACT Z{contact}_CONTACT"},
    Columns{"VARCHAR", "ZTEXT"},
    Columns{"BLOB", "ZRICHTEXTDATA"},
};

void appendColumns(std::string& sql, std::string_view names, std::string_view type) {
  while (!names.empty()) {
    const std::size_t length = std::min(names.find(' '), names.size());
    sql.append(", ").append(names.substr(0, length)).append(" ").append(type);
    names.remove_prefix(std::min(length + 1, names.size()));
  }
}

std::string entityTable(std::string_view name, std::span<const Columns> columns,
                        StoreGeneration generation) {
  std::string sql = "CREATE TABLE " + std::string(name) +
                    " (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER";
  for (const Columns& group : columns) {
    appendColumns(sql, group.always, group.type);
    if (generation == current) appendColumns(sql, group.current, group.type);
  }
  return sql + ");\n";
}

}  // namespace

StoreSchema::StoreSchema(StoreGeneration generation) : generation_(generation) {
  int next = 1;
  for (const EntityRow& row : kEntities) {
    if (generation < row.from || generation > row.until) continue;
    const int assigned = next++;
    if (!row.name.empty()) entities_.push_back({assigned, row.name, number(row.super)});
  }
}

int StoreSchema::number(std::string_view entity) const {
  const auto found = std::ranges::find(entities_, entity, &Entity::name);
  return found == entities_.end() ? 0 : found->number;
}

std::string StoreSchema::withNumbers(std::string text) const {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kPlaces{
      {{"{contact}", "ABCDContact"},
       {"{group}", "ABCDGroup"},
       {"{abstractGroup}", "ABCDAbstractGroup"}}};
  for (const auto& [place, entity] : kPlaces) {
    const std::string digits = std::to_string(number(entity));
    for (std::size_t at = 0; (at = text.find(place, at)) != std::string::npos;) {
      text.replace(at, place.size(), digits);
    }
  }
  return text;
}

std::string StoreSchema::tables() const {
  std::string sql =
      "CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER INTEGER, "
      "Z_MAX INTEGER);\n"
      "CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST "
      "BLOB);\n";
  if (generation_ == current) sql += "CREATE TABLE Z_MODELCACHE (Z_CONTENT BLOB);\n";
  sql += entityTable("ZABCDRECORD", kRecordColumns, generation_) +
         entityTable("ZABCDCONTACTDATE", kDateColumns, generation_) +
         entityTable("ZABCDEMAILADDRESS", kEmailColumns, generation_) +
         entityTable("ZABCDPHONENUMBER", kPhoneColumns, generation_) +
         entityTable("ZABCDNOTE", kNoteColumns, generation_) +
         "CREATE TABLE Z_{contact}PARENTGROUPS (Z_{contact}CONTACTS INTEGER, "
         "Z_{group}PARENTGROUPS1 INTEGER, "
         "PRIMARY KEY (Z_{contact}CONTACTS, Z_{group}PARENTGROUPS1));\n"
         "CREATE TABLE Z_{abstractGroup}PARENTGROUPS (Z_{abstractGroup}CHILDGROUPS INTEGER, "
         "Z_{group}PARENTGROUPS INTEGER, "
         "PRIMARY KEY (Z_{abstractGroup}CHILDGROUPS, Z_{group}PARENTGROUPS));\n";
  return withNumbers(std::move(sql));
}

std::string StoreSchema::indices() const {
  std::string sql;
  const auto add = [&](const std::string& table, const std::string& column) {
    sql += "CREATE INDEX " + table + "_" + column + "_INDEX ON " + table + " (" + column + ");\n";
  };
  add("ZABCDRECORD", "Z_ENT");
  add("ZABCDRECORD", "ZUNIQUEID");
  add("ZABCDRECORD", "ZME");
  if (generation_ == current) add("ZABCDRECORD", "ZCONTAINERWHERECONTACTISME");
  add("ZABCDCONTACTDATE", "ZOWNER");
  add("ZABCDEMAILADDRESS", "ZOWNER");
  add("ZABCDPHONENUMBER", "ZOWNER");
  add("ZABCDNOTE", "ZCONTACT");
  return sql;
}

}  // namespace annivo
