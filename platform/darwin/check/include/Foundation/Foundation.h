#pragma once
// What the project uses of Foundation. Each group names the documentation page that its facts are
// from.

#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>
#include <stdint.h>

// Pages: "Grouping Related Objective-C Constants", "Designating Nullability in Objective-C APIs"
#define NS_ENUM(type, name)                                                                        \
    enum name : type name;                                                                         \
    enum name : type
#define NS_OPTIONS(type, name)                                                                     \
    enum name : type name;                                                                         \
    enum __attribute__((flag_enum)) name : type
#define NS_UNAVAILABLE __attribute__((unavailable))
#define NS_RETURNS_RETAINED __attribute__((ns_returns_retained))
#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")

@class NSArray<ObjectType>, NSCoder, NSData, NSDate, NSDictionary<KeyType, ObjectType>, NSError;
@class NSSet<ObjectType>, NSString, NSURL;

// Pages: "NSCopying", "NSSecureCoding", "NSFastEnumeration"
@protocol NSCopying
@end
@protocol NSCoding
- (void)encodeWithCoder:(NSCoder*)coder;
- (instancetype)initWithCoder:(NSCoder*)coder;
@end
@protocol NSSecureCoding <NSCoding>
@property(class, readonly) BOOL supportsSecureCoding;
@end
typedef struct {
    unsigned long state;
    id __unsafe_unretained* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;
@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)count;
@end

// Pages: "NSKeyValueCoding", "NSException"
@interface NSObject (NSKeyValueCoding)
- (id)valueForKey:(NSString*)key;
@end
__attribute__((objc_exception))
@interface NSException : NSObject
@end

// Pages: "NSString", "NSUTF8StringEncoding"
typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };
@interface NSString : NSObject <NSCopying, NSSecureCoding>
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
- (NSUInteger)lengthOfBytesUsingEncoding:(NSStringEncoding)encoding;
@property(readonly) const char* UTF8String;
@end
extern "C" SEL NSSelectorFromString(NSString* name);
extern "C" NSString* NSHomeDirectory(void);

// Page: "NSNumber"
@interface NSValue : NSObject <NSCopying, NSSecureCoding>
@property(readonly) const char* objCType;
@end
@interface NSNumber : NSValue
+ (NSNumber*)numberWithBool:(BOOL)value;
+ (NSNumber*)numberWithInt:(int)value;
+ (NSNumber*)numberWithLongLong:(long long)value;
+ (NSNumber*)numberWithUnsignedLongLong:(unsigned long long)value;
+ (NSNumber*)numberWithDouble:(double)value;
@property(readonly) BOOL boolValue;
@property(readonly) long long longLongValue;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly) unsigned int unsignedIntValue;
@property(readonly) double doubleValue;
@end

// Page: "NSData"
@interface NSData : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)dataWithBytes:(const void*)bytes length:(NSUInteger)length;
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes;
@end

// Page: "NSDate"
typedef double NSTimeInterval;
@interface NSDate : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)dateWithTimeIntervalSinceReferenceDate:(NSTimeInterval)seconds;
@property(readonly) NSTimeInterval timeIntervalSinceReferenceDate;
@end

// Pages: "NSArray", "NSMutableArray"
@interface NSArray<ObjectType> : NSObject <NSCopying, NSSecureCoding, NSFastEnumeration>
@property(readonly) NSUInteger count;
- (ObjectType)objectAtIndexedSubscript:(NSUInteger)index;
- (BOOL)isEqualToArray:(NSArray<ObjectType>*)other;
@end
@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
+ (instancetype)arrayWithCapacity:(NSUInteger)count;
- (void)addObject:(ObjectType)object;
@end

// Pages: "NSDictionary", "NSMutableDictionary"
@interface NSDictionary<KeyType, ObjectType>
    : NSObject <NSCopying, NSSecureCoding, NSFastEnumeration>
+ (instancetype)dictionaryWithObjects:(const ObjectType[])objects
                              forKeys:(const id<NSCopying>[])keys
                                count:(NSUInteger)count;
@property(readonly) NSUInteger count;
- (ObjectType)objectForKey:(KeyType)key;
- (ObjectType)objectForKeyedSubscript:(KeyType)key;
@end
@interface NSMutableDictionary<KeyType, ObjectType> : NSDictionary <KeyType, ObjectType>
+ (instancetype)dictionaryWithCapacity:(NSUInteger)count;
- (void)setObject:(ObjectType)object forKey:(id<NSCopying>)key;
@end

// Pages: "NSSet", "NSMutableSet"
@interface NSSet<ObjectType> : NSObject <NSCopying, NSSecureCoding, NSFastEnumeration>
@end
@interface NSMutableSet<ObjectType> : NSSet <ObjectType>
+ (instancetype)setWithCapacity:(NSUInteger)count;
- (void)addObject:(ObjectType)object;
@end

// Page: "NSURL"
@interface NSURL : NSObject <NSCopying, NSSecureCoding>
+ (NSURL*)fileURLWithPath:(NSString*)path;
@property(readonly) const char* fileSystemRepresentation;
@end

// Pages: "NSError", "NSLocalizedDescriptionKey"
typedef NSString* NSErrorDomain;
typedef NSString* NSErrorUserInfoKey;
extern "C" NSErrorUserInfoKey const NSLocalizedDescriptionKey;
@interface NSError : NSObject <NSCopying, NSSecureCoding>
+ (instancetype)errorWithDomain:(NSErrorDomain)domain
                           code:(NSInteger)code
                       userInfo:(NSDictionary<NSErrorUserInfoKey, id>*)userInfo;
@property(readonly) NSErrorDomain domain;
@property(readonly) NSInteger code;
@property(readonly) NSString* localizedDescription;
@end

// Page: "NSProgress"
@interface NSProgress : NSObject
@end

// Page: "NSPropertyListSerialization"
typedef NS_ENUM(NSUInteger, NSPropertyListFormat) { NSPropertyListBinaryFormat_v1_0 = 200 };
typedef NSUInteger NSPropertyListWriteOptions;
typedef NS_OPTIONS(NSUInteger, NSPropertyListMutabilityOptions) { NSPropertyListImmutable = 0 };
typedef NSPropertyListMutabilityOptions NSPropertyListReadOptions;
@interface NSPropertyListSerialization : NSObject
+ (NSData*)dataWithPropertyList:(id)plist
                         format:(NSPropertyListFormat)format
                        options:(NSPropertyListWriteOptions)options
                          error:(NSError**)error;
+ (id)propertyListWithData:(NSData*)data
                   options:(NSPropertyListReadOptions)options
                    format:(NSPropertyListFormat*)format
                     error:(NSError**)error;
@end

// Pages: "NSCoder", "NSDecodingFailurePolicy"
typedef NS_ENUM(NSInteger, NSDecodingFailurePolicy) {
    NSDecodingFailurePolicyRaiseException = 0,
    NSDecodingFailurePolicySetErrorAndReturn = 1,
};
@interface NSCoder : NSObject
- (void)encodeObject:(id)object forKey:(NSString*)key;
- (id)decodeObjectOfClasses:(NSSet<Class>*)classes forKey:(NSString*)key;
@property NSDecodingFailurePolicy decodingFailurePolicy;
@property(readonly, copy) NSError* error;
@end

// Pages: "NSKeyedArchiver", "NSKeyedUnarchiver", "NSKeyedArchiveRootObjectKey"
extern "C" NSString* const NSKeyedArchiveRootObjectKey;
@interface NSKeyedArchiver : NSCoder
+ (NSData*)archivedDataWithRootObject:(id)object
                requiringSecureCoding:(BOOL)requiresSecureCoding
                                error:(NSError**)error;
@end
@interface NSKeyedUnarchiver : NSCoder
- (instancetype)initForReadingFromData:(NSData*)data error:(NSError**)error;
- (void)setClass:(Class)cls forClassName:(NSString*)codedName;
- (void)finishDecoding;
@end

// Page: "NSBundle"
@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
@property(readonly, copy) NSString* bundleIdentifier;
- (NSURL*)URLForResource:(NSString*)name
           withExtension:(NSString*)extension
            subdirectory:(NSString*)subpath;
@end

// Pages: "NSThread", "NSRunLoop", "NSRunLoopMode", "NSTimer"
@interface NSThread : NSObject
@property(class, readonly) BOOL isMainThread;
@end
@class NSTimer;
typedef NSString* NSRunLoopMode;
extern "C" NSRunLoopMode const NSRunLoopCommonModes;
@interface NSRunLoop : NSObject
@property(class, readonly, strong) NSRunLoop* mainRunLoop;
- (void)addTimer:(NSTimer*)timer forMode:(NSRunLoopMode)mode;
@end
@interface NSTimer : NSObject
+ (NSTimer*)timerWithTimeInterval:(NSTimeInterval)interval
                          repeats:(BOOL)repeats
                            block:(void (^)(NSTimer* timer))block;
- (void)invalidate;
@end

// Pages: "NSOperationQueue", "NSNotificationCenter", "NSDistributedNotificationCenter"
@interface NSOperationQueue : NSObject
@property(class, readonly, strong) NSOperationQueue* mainQueue;
@end
typedef NSString* NSNotificationName;
@interface NSNotification : NSObject
@end
@interface NSNotificationCenter : NSObject
- (id<NSObject>)addObserverForName:(NSNotificationName)name
                            object:(id)object
                             queue:(NSOperationQueue*)queue
                        usingBlock:(void (^)(NSNotification* notification))block;
@end
@interface NSDistributedNotificationCenter : NSNotificationCenter
+ (NSDistributedNotificationCenter*)defaultCenter;
@end

// Pages: "NSXPCInterface", "NSXPCProxyCreating", "NSXPCConnection"
@interface NSXPCInterface : NSObject
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol;
- (void)setClasses:(NSSet<Class>*)classes
       forSelector:(SEL)selector
     argumentIndex:(NSUInteger)index
           ofReply:(BOOL)ofReply;
@end
@protocol NSXPCProxyCreating
- (id)remoteObjectProxyWithErrorHandler:(void (^)(NSError* error))handler;
@end
@interface NSXPCConnection : NSObject <NSXPCProxyCreating>
@property(readonly) pid_t processIdentifier;
@property(strong) NSXPCInterface* exportedInterface;
@property(strong) NSXPCInterface* remoteObjectInterface;
@property(strong) id exportedObject;
@property(readonly, strong) id remoteObjectProxy;
@property(copy) void (^invalidationHandler)(void);
- (void)resume;
@end
