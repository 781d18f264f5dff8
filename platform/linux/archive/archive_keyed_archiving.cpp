#include "platform/linux/archive/archive_keyed_archiving.h"

#include "platform/linux/archive/keyed_archive_reader.h"
#include "platform/linux/archive/keyed_archive_writer.h"

namespace vantor {

Result<Bytes>
ArchiveKeyedArchiving::archiveRootObject(std::string_view className,
                                         const std::function<void(KeyedEncoder&)>& encode) {
    archive::KeyedArchiveWriter writer;
    encode(writer);
    return writer.finishObject(className);
}

Result<std::unique_ptr<KeyedUnarchiver>>
ArchiveKeyedArchiving::unarchiver(std::span<const std::uint8_t> archive) {
    auto reader = archive::KeyedArchiveReader::open(Bytes(archive.begin(), archive.end()));
    if (!reader) {
        return Failure{reader.error()};
    }
    return std::unique_ptr<KeyedUnarchiver>(std::move(reader).value());
}

} // namespace vantor
