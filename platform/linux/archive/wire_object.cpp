#include "platform/linux/archive/wire_object.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/keyed_archive_reader.h"
#include "platform/linux/archive/keyed_archive_writer.h"
#include "platform/linux/archive/plain_object.h"

#include <algorithm>

namespace vantor {

using namespace archive;

Result<Bytes> archiveObject(const Object& object) {
    const std::string& name = object.objectClass().name();
    KeyedArchiveWriter writer;
    if (!isPlainClassName(name)) {
        object.encode(writer);
        return writer.finishObject(name);
    }
    const auto value = object.valueForKey(kPlainValueKey);
    if (!value) {
        return Failure{cocoaError(kCoderInvalidValue, "the " + name + " has no value")};
    }
    if (auto checked = checkGraph(*value); !checked) {
        return Failure{checked.error()};
    }
    return writer.finishPlain(plainClass(name), *value);
}

Result<ObjectRef> unarchiveObject(std::span<const std::uint8_t> archive,
                                  std::span<const ObjectClass* const> allowed,
                                  const ObjectRuntime& runtime) {
    auto reader = KeyedArchiveReader::openInPlace(archive);
    if (!reader) {
        return Failure{reader.error()};
    }
    KeyedArchiveReader& unarchiver = **reader;
    for (const std::string& name : unarchiver.objectClassNames()) {
        if (runtime.classNamed(name) == nullptr) {
            return Failure{cocoaError(kCoderReadCorrupt,
                                      "the class \"" + name.substr(0, 80) + "\" is not known")};
        }
    }
    unarchiver.setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    ObjectRef object = unarchiver.decodeRootObject(allowed);
    unarchiver.finishDecoding();
    if (const auto error = unarchiver.error()) {
        return Failure{*error};
    }
    return object;
}

} // namespace vantor
