#include "platform/linux/archive/keyed_archive_reader.h"

#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/keyed_archive_writer.h"
#include "platform/linux/archive/plain_object.h"
#include "platform/linux/archive/property_list_codec.h"
#include "tests/platform/linux/archive/archive_bytes.h"
#include "tests/platform/linux/archive/record_class.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::archive {
namespace {

using ::testing::HasSubstr;
using UID = PropertyList::UID;
using Array = PropertyList::Array;
using Dictionary = PropertyListDictionary;

PropertyList classRecord(const char* name) {
    return Dictionary{{"$classname", name}, {"$classes", Array{name, "NSObject"}}};
}

/// An archive with these objects behind "$null" and object 1 as its root.
Bytes archiveOf(Array objects) {
    objects.insert(objects.begin(), PropertyList("$null"));
    return PropertyListCodec().writeBinary(Dictionary{{"$version", 100000},
                                                      {"$archiver", "NSKeyedArchiver"},
                                                      {"$top", Dictionary{{"root", UID{1}}}},
                                                      {"$objects", std::move(objects)}});
}

class KeyedArchiveReaderTest : public ::testing::Test {
  protected:
    struct Outcome {
        ObjectRef object;
        std::string error;
    };

    Outcome decode(const Bytes& archive, std::vector<const ObjectClass*> allowed) {
        auto reader = KeyedArchiveReader::open(archive);
        if (!reader) {
            return {.object = nullptr, .error = reader.error().message};
        }
        KeyedArchiveReader& unarchiver = **reader;
        unarchiver.setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
        ObjectRef object = unarchiver.decodeRootObject(allowed);
        const auto error = unarchiver.error();
        return {.object = object, .error = error ? error->message : ""};
    }

    /// What a record's payload reads as, or why not.
    Outcome decodePayload(Array objectsFromTwo) {
        Array objects{Dictionary{{"Payload", UID{2}}, {"$class", UID{3}}}};
        objects.push_back(std::move(objectsFromTwo[0]));
        objects.push_back(classRecord("Record"));
        objects.insert(objects.end(), objectsFromTwo.begin() + 1, objectsFromTwo.end());
        return decode(archiveOf(std::move(objects)), {&record_});
    }

    static PropertyList payload(const ObjectRef& object) {
        const auto value = object ? object->valueForKey("payload") : std::nullopt;
        EXPECT_TRUE(value.has_value());
        return value.value_or(PropertyList());
    }

    const RecordClass record_{"Record"};
    const RecordClass other_{"Other"};
    const std::unique_ptr<const ObjectClass> string_ = makePlainClass("NSString");
    const std::unique_ptr<const ObjectClass> array_ = makePlainClass("NSArray");
};

TEST_F(KeyedArchiveReaderTest, ReadsBackEveryKindOfValue) {
    const PropertyList graph = Dictionary{
        {"integers", Array{0, -1, INT64_MAX, INT64_MIN, PropertyList(UINT64_MAX)}},
        {"reals", Array{0.5, -1e300}},
        {"flags", Array{true, false}},
        {"text", "ä 漢 😀 $null"},
        {"data", Bytes{0, 255}},
        {"date", PropertyList::Date{12.5}},
        {"empty", Array{Array{}, Dictionary{}, "", Bytes{}}},
        {"url", Dictionary{{"relative", "file:///a%20b"}}},
    };
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(graph, "Payload"));
    const Outcome outcome = decode(writer.finishObject("Record"), {&record_});
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(payload(outcome.object), graph);
    EXPECT_EQ(&outcome.object->objectClass(), &record_);
}

TEST_F(KeyedArchiveReaderTest, DecodesAMappedNameWithTheOtherClass) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(7, "Payload"));
    auto reader = ArchiveKeyedArchiving().unarchiver(writer.finishObject("Carrier"));
    ASSERT_TRUE(reader.hasValue());
    KeyedUnarchiver& unarchiver = **reader;
    unarchiver.setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    unarchiver.setClass(record_, "Carrier");
    const ObjectRef object =
        unarchiver.decodeRootObject(std::array<const ObjectClass*, 1>{&record_});
    EXPECT_EQ(unarchiver.error(), std::nullopt);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(&object->objectClass(), &record_);
}

TEST_F(KeyedArchiveReaderTest, RefusesAMappedClassThatIsNotAllowed) {
    auto reader = KeyedArchiveReader::open(KeyedArchiveWriter().finishObject("Carrier"));
    ASSERT_TRUE(reader.hasValue());
    (*reader)->setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    (*reader)->setClass(record_, "Carrier");
    EXPECT_EQ((*reader)->decodeRootObject(std::array<const ObjectClass*, 1>{&other_}), nullptr);
    EXPECT_THAT((*reader)->error()->message, HasSubstr("\"Carrier\" is not allowed"));
}

TEST_F(KeyedArchiveReaderTest, RefusesEveryClassThatIsNotAllowedEvenWhereNothingRefersToIt) {
    const Outcome outcome = decode(
        archiveOf({Dictionary{{"$class", UID{2}}}, classRecord("Record"), classRecord("Intruder")}),
        {&record_});
    EXPECT_EQ(outcome.object, nullptr);
    EXPECT_THAT(outcome.error, HasSubstr("\"Intruder\" is not allowed"));
}

TEST_F(KeyedArchiveReaderTest, AnAllowedClassStillDoesNotBelongInsideAValue) {
    const Outcome outcome = decodePayload({Dictionary{{"$class", UID{3}}}});
    EXPECT_EQ(outcome.object, nullptr);
    EXPECT_THAT(outcome.error, HasSubstr("\"Record\" does not belong in a value"));
}

TEST_F(KeyedArchiveReaderTest, ReadsAPlainRootOnlyWhereItsClassIsAllowed) {
    const Outcome text = decode(archiveOf({"hello"}), {string_.get()});
    EXPECT_EQ(text.error, "");
    ASSERT_NE(text.object, nullptr);
    EXPECT_EQ(text.object->asString(), "hello");
    EXPECT_EQ(&text.object->objectClass(), string_.get());
    EXPECT_THAT(decode(archiveOf({"hello"}), {&record_, array_.get()}).error,
                HasSubstr("\"NSString\" is not allowed"));
    const Outcome list =
        decode(archiveOf({Dictionary{{"NS.objects", Array{UID{3}}}, {"$class", UID{2}}},
                          classRecord("NSMutableArray"), 5}),
               {array_.get()});
    ASSERT_NE(list.object, nullptr) << list.error;
    EXPECT_EQ(list.object->valueForKey(kPlainValueKey), PropertyList(Array{5}));
}

TEST_F(KeyedArchiveReaderTest, ReadsMutableContentDirectlyAndByReference) {
    const Outcome direct = decodePayload(
        {Dictionary{{"NS.string", "text"}, {"$class", UID{4}}}, classRecord("NSMutableString")});
    EXPECT_EQ(payload(direct.object), PropertyList("text")) << direct.error;
    const Outcome referred = decodePayload({Dictionary{{"NS.data", UID{5}}, {"$class", UID{4}}},
                                            classRecord("NSMutableData"), Bytes{1}});
    EXPECT_EQ(payload(referred.object), PropertyList(Bytes{1})) << referred.error;
}

TEST_F(KeyedArchiveReaderTest, ReadsURLsAndErrorsAsTheirParts) {
    const Outcome url =
        decodePayload({Dictionary{{"NS.base", UID{0}}, {"NS.relative", UID{5}}, {"$class", UID{4}}},
                       classRecord("NSURL"), "file:///x"});
    EXPECT_EQ(payload(url.object), PropertyList(Dictionary{{"relative", "file:///x"}}))
        << url.error;
    const Outcome error =
        decodePayload({Dictionary{{"NSDomain", UID{5}}, {"NSCode", 3}, {"$class", UID{4}}},
                       classRecord("NSError"), "Domain"});
    EXPECT_EQ(payload(error.object),
              PropertyList(Dictionary{{"NSDomain", "Domain"}, {"NSCode", 3}}))
        << error.error;
}

TEST_F(KeyedArchiveReaderTest, RefusesCyclesSharedExpansionAndDepth) {
    const PropertyList list = classRecord("NSArray");
    EXPECT_THAT(decodePayload({Dictionary{{"NS.objects", Array{UID{5}}}, {"$class", UID{4}}}, list,
                               Dictionary{{"NS.objects", Array{UID{2}}}, {"$class", UID{4}}}})
                    .error,
                HasSubstr("object 2 contains itself"));
    Array laughs{Dictionary{{"NS.objects", Array(8, UID{5})}, {"$class", UID{4}}}, list};
    for (std::uint32_t level = 5; level < 40; ++level) {
        laughs.push_back(Dictionary{{"NS.objects", Array(8, UID{level + 1})}, {"$class", UID{4}}});
    }
    laughs.push_back("ha");
    EXPECT_THAT(decodePayload(std::move(laughs)).error, HasSubstr("expands beyond the limit"));
    Array deep{Dictionary{{"NS.objects", Array{UID{5}}}, {"$class", UID{4}}}, list};
    for (std::uint32_t level = 5; level < 20000; ++level) {
        deep.push_back(Dictionary{{"NS.objects", Array{UID{level + 1}}}, {"$class", UID{4}}});
    }
    deep.push_back("bottom");
    EXPECT_THAT(decodePayload(std::move(deep)).error, HasSubstr("deeper than the limit of 512"));
}

TEST_F(KeyedArchiveReaderTest, RefusesAWideObjectThatIsReferredToOverAndOver) {
    Dictionary wide{{"NS.objects", Array{}}, {"$class", UID{4}}};
    for (int index = 0; index < 1000; ++index) {
        wide.append("k" + std::to_string(index), 0);
    }
    EXPECT_THAT(decodePayload({Dictionary{{"NS.objects", Array(1000, UID{5})}, {"$class", UID{4}}},
                               classRecord("NSArray"), wide})
                    .error,
                HasSubstr("expands beyond the limit"));
}

TEST_F(KeyedArchiveReaderTest, RefusesMalformedValues) {
    const PropertyList list = classRecord("NSArray");
    const PropertyList dictionary = classRecord("NSDictionary");
    EXPECT_THAT(
        decodePayload({Dictionary{{"NS.objects", Array{UID{99}}}, {"$class", UID{4}}}, list}).error,
        HasSubstr("refers to object 99 of 5"));
    EXPECT_THAT(
        decodePayload({Dictionary{{"NS.objects", Array{UID{0}}}, {"$class", UID{4}}}, list}).error,
        HasSubstr("refers to object 0"));
    EXPECT_THAT(
        decodePayload({Dictionary{{"NS.objects", Array{1}}, {"$class", UID{4}}}, list}).error,
        HasSubstr("no reference"));
    EXPECT_THAT(decodePayload({Dictionary{{"$class", UID{4}}}, list}).error,
                HasSubstr("lacks its elements"));
    EXPECT_THAT(
        decodePayload(
            {Dictionary{{"NS.objects", Array{UID{5}}}, {"NS.keys", Array{}}, {"$class", UID{4}}},
             dictionary, "v"})
            .error,
        HasSubstr("not as many keys as values"));
    EXPECT_THAT(decodePayload({Dictionary{{"NS.objects", Array{UID{5}}},
                                          {"NS.keys", Array{UID{5}}},
                                          {"$class", UID{4}}},
                               dictionary, 1})
                    .error,
                HasSubstr("is no text"));
    EXPECT_THAT(decodePayload({Dictionary{{"NS.objects", Array{}}, {"$class", UID{77}}}}).error,
                HasSubstr("has no class"));
    EXPECT_THAT(decodePayload({PropertyList(Array{})}).error, HasSubstr("is no value"));
    EXPECT_THAT(decodePayload({Dictionary{{"$class", UID{4}}}, classRecord("NSDate")}).error,
                HasSubstr("without a time"));
    EXPECT_THAT(decodePayload({Dictionary{{"$class", UID{4}}}, classRecord("NSURL")}).error,
                HasSubstr("lacks its text"));
}

TEST_F(KeyedArchiveReaderTest, AnObjectThatDecodesNothingIsAFailure) {
    const Outcome outcome = decode(KeyedArchiveWriter().finishObject("Record"), {&record_});
    EXPECT_EQ(outcome.object, nullptr);
    EXPECT_THAT(outcome.error, HasSubstr("\"Record\" decoded nothing"));
}

TEST_F(KeyedArchiveReaderTest, TheFirstFailureStays) {
    const Outcome outcome = decodePayload(
        {Dictionary{{"NS.objects", Array{UID{99}}}, {"$class", UID{4}}}, classRecord("NSArray")});
    EXPECT_THAT(outcome.error, HasSubstr("refers to object 99"));
}

TEST_F(KeyedArchiveReaderTest, RefusesWhatIsNoArchive) {
    const auto whyNot = [this](const PropertyList& list) {
        return decode(PropertyListCodec().writeBinary(list), {&record_}).error;
    };
    const PropertyList top = Dictionary{{"root", UID{1}}};
    const PropertyList objects = Array{"$null", "x"};
    EXPECT_THAT(whyNot(Array{}), HasSubstr("no dictionary"));
    EXPECT_THAT(whyNot(Dictionary{{"$version", 99999}}), HasSubstr("version is not 100000"));
    EXPECT_THAT(whyNot(Dictionary{{"$version", 100000}, {"$archiver", "Other"}}),
                HasSubstr("archiver is not NSKeyedArchiver"));
    EXPECT_THAT(whyNot(Dictionary{{"$version", 100000},
                                  {"$archiver", "NSKeyedArchiver"},
                                  {"$top", top},
                                  {"$objects", Array{}}}),
                HasSubstr("no objects"));
    EXPECT_THAT(whyNot(Dictionary{{"$version", 100000},
                                  {"$archiver", "NSKeyedArchiver"},
                                  {"$top", Dictionary{{"root", UID{2}}}},
                                  {"$objects", objects}}),
                HasSubstr("no root object"));
    EXPECT_THAT(whyNot(Dictionary{{"$version", 100000},
                                  {"$archiver", "NSKeyedArchiver"},
                                  {"$top", Dictionary{{"root", UID{0}}}},
                                  {"$objects", objects}}),
                HasSubstr("root object is nothing"));
    EXPECT_THAT(decode(bytesOf("bplist00 cut"), {&record_}).error, HasSubstr("too short"));
}

TEST_F(KeyedArchiveReaderTest, DecodesNothingAfterItHasBeenFinished) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(7, "Payload"));
    auto reader = KeyedArchiveReader::open(writer.finishObject("Record"));
    ASSERT_TRUE(reader.hasValue());
    (*reader)->setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    (*reader)->finishDecoding();
    EXPECT_EQ((*reader)->decodeRootObject(std::array<const ObjectClass*, 1>{&record_}), nullptr);
    EXPECT_THAT((*reader)->error()->message, HasSubstr("finished"));
}

TEST_F(KeyedArchiveReaderTest, UnderTheRaisingPolicyAFailureStopsTheProcess) {
    auto reader = KeyedArchiveReader::open(KeyedArchiveWriter().finishObject("Record"));
    ASSERT_TRUE(reader.hasValue());
    EXPECT_DEATH((*reader)->decodeRootObject({}),
                 "uncaught decoding failure: the class \"Record\"");
}

TEST_F(KeyedArchiveReaderTest, ReadsArchivesInXML) {
    const std::string text =
        "<plist><dict><key>$version</key><integer>100000</integer><key>$archiver</key>"
        "<string>NSKeyedArchiver</string><key>$top</key><dict><key>root</key><dict>"
        "<key>CF$UID</key><integer>1</integer></dict></dict><key>$objects</key><array>"
        "<string>$null</string><string>x</string></array></dict></plist>";
    const Outcome outcome = decode(bytesOf(text), {string_.get()});
    ASSERT_NE(outcome.object, nullptr) << outcome.error;
    EXPECT_EQ(outcome.object->asString(), "x");
}

} // namespace
} // namespace vantor::archive
