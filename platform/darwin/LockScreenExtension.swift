// The part of the seam that exists only in Swift: the app-extension runtime and mirrors. Everything
// is forwarded through swift_interface.h.

import ExtensionFoundation
import Foundation

struct LockScreenConfiguration: AppExtensionConfiguration {
    func accept(connection: NSXPCConnection) -> Bool {
        VantorExtensionAccept(Unmanaged.passUnretained(connection).toOpaque())
    }
}

final class LockScreenExtension: AppExtension {
    init() { VantorExtensionConstruct() }
    var configuration: LockScreenConfiguration { LockScreenConfiguration() }
}

@_cdecl("VantorRunAppExtension")
func runAppExtension() -> UnsafeMutablePointer<CChar>? {
    do {
        try LockScreenExtension.main()
        return nil
    } catch {
        return strdup(String(describing: error))
    }
}

/// A value and its children, which a mirror offers in order only.
private final class Reflected {
    let value: Any
    let style: Mirror.DisplayStyle?
    let children: [Mirror.Child]

    init(_ value: Any) {
        let mirror = Mirror(reflecting: value)
        self.value = value
        style = mirror.displayStyle
        children = Array(mirror.children)
    }

    func retained() -> UnsafeRawPointer { UnsafeRawPointer(Unmanaged.passRetained(self).toOpaque()) }

    static func of(_ mirror: UnsafeRawPointer) -> Reflected {
        Unmanaged<Reflected>.fromOpaque(mirror).takeUnretainedValue()
    }

    /// The value as that very type, an optional's payload counting as itself. A number object would
    /// convert to any number, and is therefore none of them.
    func exactly<T>(_ type: T.Type) -> T? {
        var payload = value
        while case let mirror = Mirror(reflecting: payload), mirror.displayStyle == .optional,
              let some = mirror.children.first {
            payload = some.value
        }
        return Swift.type(of: payload) == type ? payload as? T : nil
    }
}

@_cdecl("VantorMirrorCreate")
func mirrorCreate(_ object: UnsafeRawPointer) -> UnsafeRawPointer {
    Reflected(Unmanaged<AnyObject>.fromOpaque(object).takeUnretainedValue()).retained()
}
@_cdecl("VantorMirrorRelease")
func mirrorRelease(_ mirror: UnsafeRawPointer) {
    Unmanaged<Reflected>.fromOpaque(mirror).release()
}
@_cdecl("VantorMirrorChildCount")
func mirrorChildCount(_ mirror: UnsafeRawPointer) -> Int { Reflected.of(mirror).children.count }
@_cdecl("VantorMirrorCreateChild")
func mirrorCreateChild(_ mirror: UnsafeRawPointer, _ index: Int) -> UnsafeRawPointer {
    Reflected(Reflected.of(mirror).children[index].value).retained()
}
@_cdecl("VantorMirrorCopyChildLabel")
func mirrorCopyChildLabel(_ mirror: UnsafeRawPointer, _ index: Int) -> UnsafeMutablePointer<CChar>? {
    Reflected.of(mirror).children[index].label.flatMap { strdup($0) }
}
@_cdecl("VantorMirrorIsEnumeration")
func mirrorIsEnumeration(_ mirror: UnsafeRawPointer) -> Bool { Reflected.of(mirror).style == .enum }
@_cdecl("VantorMirrorCopyDescription")
func mirrorCopyDescription(_ mirror: UnsafeRawPointer) -> UnsafeMutablePointer<CChar>? {
    strdup(String(describing: Reflected.of(mirror).value))
}
@_cdecl("VantorMirrorCopyBytes")
func mirrorCopyBytes(_ mirror: UnsafeRawPointer, _ count: UnsafeMutablePointer<Int>)
    -> UnsafeMutablePointer<UInt8>? {
    guard let data = Reflected.of(mirror).value as? Data,
          let bytes = malloc(max(data.count, 1))?.assumingMemoryBound(to: UInt8.self)
    else { return nil }
    data.copyBytes(to: bytes, count: data.count)
    count.pointee = data.count
    return bytes
}
@_cdecl("VantorMirrorGetUUID")
func mirrorGetUUID(_ mirror: UnsafeRawPointer, _ bytes: UnsafeMutablePointer<UInt8>) -> Bool {
    guard let identifier = Reflected.of(mirror).value as? UUID else { return false }
    withUnsafeBytes(of: identifier.uuid) { UnsafeMutableRawPointer(bytes).copyMemory(from: $0.baseAddress!, byteCount: 16) }
    return true
}

private func give<T>(_ value: T?, _ out: UnsafeMutablePointer<T>) -> Bool {
    guard let value else { return false }
    out.pointee = value
    return true
}
@_cdecl("VantorMirrorGetSize")
func mirrorGetSize(_ mirror: UnsafeRawPointer, _ width: UnsafeMutablePointer<Double>,
                   _ height: UnsafeMutablePointer<Double>) -> Bool {
    let size = Reflected.of(mirror).exactly(CGSize.self)
    return give((size?.width).map(Double.init), width) && give((size?.height).map(Double.init), height)
}

/// The system's CGFloat is a double under another name.
@_cdecl("VantorMirrorGetDouble")
func mirrorGetDouble(_ mirror: UnsafeRawPointer, _ value: UnsafeMutablePointer<Double>) -> Bool {
    let reflected = Reflected.of(mirror)
    return give(reflected.exactly(Double.self) ?? reflected.exactly(CGFloat.self).map(Double.init), value)
}
@_cdecl("VantorMirrorGetUInt32")
func mirrorGetUInt32(_ mirror: UnsafeRawPointer, _ value: UnsafeMutablePointer<UInt32>) -> Bool {
    give(Reflected.of(mirror).exactly(UInt32.self), value)
}
@_cdecl("VantorMirrorGetBoolean")
func mirrorGetBoolean(_ mirror: UnsafeRawPointer, _ value: UnsafeMutablePointer<Bool>) -> Bool {
    give(Reflected.of(mirror).exactly(Bool.self), value)
}
@_cdecl("VantorMirrorCopyFileURL")
func mirrorCopyFileURL(_ mirror: UnsafeRawPointer) -> UnsafeMutablePointer<CChar>? {
    guard let url = Reflected.of(mirror).value as? URL, url.isFileURL else { return nil }
    return strdup(url.absoluteString)
}
