#include "platform/linux/archive/binary_property_list_reader.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/binary_objects.h"

#include <vector>

namespace vantor::archive {
namespace {

class Reader {
  public:
    explicit Reader(const BinaryObjects& objects) : objects_(objects) {
        onPath_.assign(static_cast<std::size_t>(objects.count()), false);
    }

    bool read(PropertyList& root) {
        return budget_.take(1, 0) && readObject(objects_.top(), 0, root);
    }

    const std::string& error() const { return error_; }

  private:
    using Container = BinaryObjects::Container;
    using Reading = BinaryObjects::Reading;
    using Reference = BinaryObjects::Reference;

    bool fail(std::string why) {
        error_ = std::move(why);
        return false;
    }

    bool failAt(Reference object, const std::string& why) {
        return fail("object " + std::to_string(object) + ": " + why);
    }

    bool settle(Reference object, Reading reading) {
        switch (reading) {
        case Reading::done:
            return true;
        case Reading::malformed:
            return failAt(object, std::exchange(error_, {}));
        case Reading::exceeded:
            break;
        }
        return fail(ExpansionBudget::exceeded());
    }

    /// The budget has paid for the value itself.
    bool readObject(Reference object, std::size_t depth, PropertyList& out) {
        if (object >= objects_.count()) {
            return fail("refers to object " + std::to_string(object) + " of " +
                        std::to_string(objects_.count()));
        }
        return objects_.isContainer(object)
                   ? readContainer(object, depth, out)
                   : settle(object, objects_.readLeaf(object, budget_, out, error_));
    }

    bool readContainer(Reference object, std::size_t depth, PropertyList& out) {
        const auto container = objects_.container(object);
        if (!container) {
            return failAt(object, "more elements than the bytes that are there");
        }
        if (onPath_[static_cast<std::size_t>(object)]) {
            return failAt(object, "contains itself");
        }
        if (depth >= kMaxDepth) {
            return failAt(object, "nests deeper than the limit of " + std::to_string(kMaxDepth));
        }
        // Paid before any is made: containers within containers may share their bytes.
        if (!budget_.take(container->isDictionary ? 2 * container->count : container->count, 0)) {
            return fail(ExpansionBudget::exceeded());
        }
        onPath_[static_cast<std::size_t>(object)] = true;
        const bool done = container->isDictionary ? readDictionary(*container, depth, out)
                                                  : readArray(*container, depth, out);
        onPath_[static_cast<std::size_t>(object)] = false;
        return done;
    }

    bool readArray(const Container& elements, std::size_t depth, PropertyList& out) {
        PropertyList::Array array(elements.count, PropertyList(false));
        for (std::size_t index = 0; index < elements.count; ++index) {
            if (!readObject(objects_.element(elements, index), depth + 1, array[index])) {
                return false;
            }
        }
        out = PropertyList(std::move(array));
        return true;
    }

    bool readDictionary(const Container& entries, std::size_t depth, PropertyList& out) {
        PropertyListDictionary dictionary;
        dictionary.reserve(entries.count);
        for (std::size_t index = 0; index < entries.count; ++index) {
            const Reference name = objects_.element(entries, index);
            std::string key;
            if (!settle(name, objects_.readText(name, budget_, key, error_)) ||
                !readObject(objects_.element(entries, entries.count + index), depth + 1,
                            dictionary.append(std::move(key), PropertyList(false)))) {
                return false;
            }
        }
        out = PropertyList(std::move(dictionary));
        return true;
    }

    const BinaryObjects objects_;
    /// The containers that are being read, to tell a cycle from mere depth.
    std::vector<bool> onPath_;
    ExpansionBudget budget_;
    std::string error_;
};

} // namespace

Result<PropertyList> readBinaryPropertyList(std::span<const std::uint8_t> bytes) {
    const auto refuse = [](const std::string& why) {
        return Failure{cocoaError(kPropertyListReadCorrupt, "binary property list " + why)};
    };
    const auto objects = BinaryObjects::open(bytes);
    if (!objects) {
        return refuse(objects.error());
    }
    Reader reader(objects.value());
    PropertyList root;
    if (!reader.read(root)) {
        return refuse(reader.error());
    }
    return root;
}

} // namespace vantor::archive
