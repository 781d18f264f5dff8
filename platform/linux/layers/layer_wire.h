#pragma once
// The private socket of one hosted remote context, from the extension to the agent that shows it.
// SOCK_SEQPACKET; one record is one packet of exactly its type's size, native byte order (both ends
// run on one machine), with the descriptors that its kind says (SCM_RIGHTS) and no others.
//
// The extension tells the layer tree, shares each drawable's image once, and announces a frame when
// the GPU has finished it. A hosted frame's image stays the host's until the host gives it back; of
// a layer's (at most two) drawables the host so holds one while it shows it and a second one for
// the moment in which it changes over. Images are in the general layout, released to outside queue
// families. Both ends draw on the same device (the image record says which).
//
// A record of another size or kind, a number out of range or a missing or superfluous descriptor is
// a broken peer: the receiver closes the socket. End of file means that the other end is gone.

#include <array>
#include <cstddef>
#include <cstdint>

namespace vantor::layerwire {

inline constexpr std::size_t kMaxLayers = 16;
inline constexpr std::uint32_t kMaxImageSide = 16384;
/// Images that a host keeps for one context.
inline constexpr std::size_t kMaxImages = 64;
inline constexpr std::uint32_t kNoParent = 0xFFFFFFFF;
inline constexpr std::uint32_t kNoImage = 0;

enum class Kind : std::uint32_t {
    /// Extension → host: the whole tree, replacing the one before.
    tree = 1,
    /// Extension → host: an image of a Metal layer; one descriptor, its memory.
    image = 2,
    /// Extension → host: a still picture; one descriptor, its pixels (BGRA rows without padding).
    picture = 3,
    /// Extension → host: an image or picture is no longer used.
    forget = 4,
    /// Extension → host: the Metal layer shows this image from now on; kNoImage shows nothing.
    frame = 5,
    /// Host → extension: the host has done with the image's frame.
    release = 6,
    /// Host → extension: the device that the host draws on. Comes first.
    device = 7,
    /// Extension → host: memory for frames of a Metal layer, used as an image is; one descriptor,
    /// the memory (BGRA rows without padding). Each frame record says that it was filled anew.
    memory = 8,
};

enum class LayerKind : std::uint32_t { plain = 0, metal = 1 };
enum class Gravity : std::uint32_t { resize = 0, aspectFill = 1 };

struct LayerState {
    std::uint32_t layerID;
    /// Index in the tree of the layer above, which comes first; kNoParent for the root.
    std::uint32_t parent;
    LayerKind kind;
    Gravity gravity;
    /// Points, in the parent's coordinates, y downwards.
    double x;
    double y;
    double width;
    double height;
    /// Pixels per point.
    double contentsScale;
    /// Not premultiplied; alpha 0 is no background.
    std::array<float, 4> background;
    /// A picture, or kNoImage.
    std::uint32_t picture;
    std::uint32_t masksToBounds;
};
static_assert(sizeof(LayerState) == 80);

struct Header {
    Kind kind;
    std::uint32_t reserved;
};

/// Later layers are drawn over earlier ones.
struct TreeRecord {
    Header header;
    std::uint32_t layerCount;
    std::uint32_t reserved;
    std::array<LayerState, kMaxLayers> layers;
};

struct ImageRecord {
    Header header;
    std::uint32_t layerID;
    std::uint32_t imageID;
    std::uint32_t width;
    std::uint32_t height;
    std::uint64_t memorySize;
    std::array<std::uint8_t, 16> deviceUUID;
    std::array<std::uint8_t, 16> driverUUID;
};

struct PictureRecord {
    Header header;
    std::uint32_t imageID;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t reserved;
};

struct MemoryRecord {
    Header header;
    std::uint32_t imageID;
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t reserved;
};

struct DeviceRecord {
    Header header;
    std::array<std::uint8_t, 16> deviceUUID;
    std::array<std::uint8_t, 16> driverUUID;
};

struct ForgetRecord {
    Header header;
    std::uint32_t imageID;
    std::uint32_t reserved;
};

struct FrameRecord {
    Header header;
    std::uint32_t layerID;
    std::uint32_t imageID;
};

struct ReleaseRecord {
    Header header;
    std::uint32_t imageID;
    std::uint32_t reserved;
};

/// The size of the record of that kind; 0 for unknown kinds.
constexpr std::size_t sizeOf(Kind kind) {
    switch (kind) {
    case Kind::tree:
        return sizeof(TreeRecord);
    case Kind::image:
        return sizeof(ImageRecord);
    case Kind::picture:
        return sizeof(PictureRecord);
    case Kind::forget:
        return sizeof(ForgetRecord);
    case Kind::frame:
        return sizeof(FrameRecord);
    case Kind::release:
        return sizeof(ReleaseRecord);
    case Kind::device:
        return sizeof(DeviceRecord);
    case Kind::memory:
        return sizeof(MemoryRecord);
    }
    return 0;
}

constexpr bool carriesDescriptor(Kind kind) {
    return kind == Kind::image || kind == Kind::picture || kind == Kind::memory;
}

} // namespace vantor::layerwire
