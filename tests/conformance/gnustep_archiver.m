// Keyed archives through GNUstep's Foundation.
//
//   gnustep_archiver read  CLASS KEY   reads an archive from standard input whose root object is of
//                                      CLASS, decodes what stands under KEY with its own class in
//                                      CLASS's place, and prints it
//   gnustep_archiver write CLASS KEY   reads a property list from standard input, archives an object
//                                      of CLASS that holds it under KEY, and prints the archive
//   gnustep_archiver time-read, time-write   the same over and over, and print the seconds that one
//                                            takes
//
// Values are printed as the test that runs this prints them: numbers with their kind, data in
// hexadecimal, dictionaries sorted by the bytes of their keys.

#import <Foundation/Foundation.h>

#include <stdio.h>
#include <string.h>

static NSString *theKey;

@interface StandIn : NSObject <NSCoding> {
    id value;
}
- (id)initWithValue:(id)aValue;
- (id)value;
@end

@implementation StandIn
- (id)initWithValue:(id)aValue {
    if ((self = [super init])) {
        value = [aValue retain];
    }
    return self;
}
- (id)initWithCoder:(NSCoder *)coder {
    return [self initWithValue:[coder containsValueForKey:theKey] ? [coder decodeObjectForKey:theKey]
                                                                  : nil];
}
- (void)encodeWithCoder:(NSCoder *)coder {
    [coder encodeObject:value forKey:theKey];
}
- (id)value {
    return value;
}
- (void)dealloc {
    [value release];
    [super dealloc];
}
@end

static NSComparisonResult byBytes(id a, id b, void *context) {
    (void)context;
    const int order = strcmp([a UTF8String], [b UTF8String]);
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
}

static void printText(NSString *text) {
    putchar('"');
    for (const char *c = [text UTF8String]; *c != '\0'; ++c) {
        if (*c == '"' || *c == '\\') {
            putchar('\\');
        }
        putchar(*c);
    }
    putchar('"');
}

static void printNumber(NSNumber *number) {
    switch (*[number objCType]) {
    case 'c':
    case 'C':
    case 'B':
        printf("%s", [number boolValue] ? "true" : "false");
        break;
    case 'f':
    case 'd':
        printf("real %a", [number doubleValue]);
        break;
    case 'L':
    case 'Q':
        printf("%llu", [number unsignedLongLongValue]);
        break;
    default:
        printf("%lld", [number longLongValue]);
    }
}

static void print(id value) {
    if (value == nil) {
        printf("nothing");
    } else if ([value isKindOfClass:[NSString class]]) {
        printText(value);
    } else if ([value isKindOfClass:[NSNumber class]]) {
        printNumber(value);
    } else if ([value isKindOfClass:[NSDate class]]) {
        printf("date %a", [value timeIntervalSinceReferenceDate]);
    } else if ([value isKindOfClass:[NSURL class]]) {
        printf("url ");
        printText([value absoluteString]);
    } else if ([value isKindOfClass:[NSData class]]) {
        const unsigned char *bytes = [value bytes];
        putchar('<');
        for (NSUInteger i = 0; i < [value length]; ++i) {
            printf("%02x", bytes[i]);
        }
        putchar('>');
    } else if ([value isKindOfClass:[NSArray class]]) {
        putchar('[');
        for (NSUInteger i = 0; i < [value count]; ++i) {
            print([value objectAtIndex:i]);
            putchar(',');
        }
        putchar(']');
    } else if ([value isKindOfClass:[NSDictionary class]]) {
        NSArray *keys = [[value allKeys] sortedArrayUsingFunction:byBytes context:NULL];
        putchar('{');
        for (NSUInteger i = 0; i < [keys count]; ++i) {
            printText([keys objectAtIndex:i]);
            putchar(':');
            print([value objectForKey:[keys objectAtIndex:i]]);
            putchar(',');
        }
        putchar('}');
    } else {
        printf("an object of %s", [NSStringFromClass([value class]) UTF8String]);
    }
}

static StandIn *unarchived(NSString *className, NSData *archive) {
    NSKeyedUnarchiver *unarchiver =
        [[[NSKeyedUnarchiver alloc] initForReadingWithData:archive] autorelease];
    [unarchiver setClass:[StandIn class] forClassName:className];
    return [unarchiver decodeObjectForKey:@"root"];
}

static NSData *archived(NSString *className, StandIn *root) {
    NSMutableData *archive = [NSMutableData data];
    NSKeyedArchiver *archiver =
        [[[NSKeyedArchiver alloc] initForWritingWithMutableData:archive] autorelease];
    [archiver setOutputFormat:NSPropertyListBinaryFormat_v1_0];
    [archiver setClassName:className forClass:[StandIn class]];
    [archiver encodeObject:root forKey:@"root"];
    [archiver finishEncoding];
    return archive;
}

static int readArchive(NSString *className, NSData *input) {
    StandIn *root = unarchived(className, input);
    if (![root isKindOfClass:[StandIn class]]) {
        fprintf(stderr, "the root object is of another class\n");
        return 1;
    }
    print([root value]);
    return 0;
}

static StandIn *rootOfList(NSData *input) {
    NSString *failure = nil;
    NSPropertyListFormat format;
    id list = [NSPropertyListSerialization propertyListFromData:input
                                               mutabilityOption:NSPropertyListImmutable
                                                         format:&format
                                               errorDescription:&failure];
    if (list == nil) {
        fprintf(stderr, "%s\n", failure != nil ? [failure UTF8String] : "no property list");
        return nil;
    }
    return [[[StandIn alloc] initWithValue:list] autorelease];
}

static int writeArchive(NSString *className, NSData *input) {
    StandIn *root = rootOfList(input);
    if (root == nil) {
        return 1;
    }
    NSData *archive = archived(className, root);
    fwrite([archive bytes], 1, [archive length], stdout);
    return 0;
}

static int timeArchiving(BOOL reading, NSString *className, NSData *input) {
    const NSTimeInterval enough = 0.3;
    int rounds = 0;
    StandIn *root = reading ? nil : rootOfList(input);
    NSDate *begin = [NSDate date];
    for (; -[begin timeIntervalSinceNow] < enough; ++rounds) {
        NSAutoreleasePool *pool = [NSAutoreleasePool new];
        id result = reading ? (id)unarchived(className, input) : (id)archived(className, root);
        if (result == nil) {
            return 1;
        }
        [pool release];
    }
    printf("%.9f\n", -[begin timeIntervalSinceNow] / rounds);
    return 0;
}

static int run(const char *verb, NSString *className, NSData *input) {
    if (strcmp(verb, "read") == 0) {
        return readArchive(className, input);
    }
    if (strcmp(verb, "write") == 0) {
        return writeArchive(className, input);
    }
    return timeArchiving(strcmp(verb, "time-read") == 0, className, input);
}

int main(int argc, const char **argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: gnustep_archiver read|write|time-read|time-write CLASS KEY\n");
        return 2;
    }
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    NSString *className = [NSString stringWithUTF8String:argv[2]];
    theKey = [[NSString alloc] initWithUTF8String:argv[3]];
    NSData *input = [[NSFileHandle fileHandleWithStandardInput] readDataToEndOfFile];
    int status = 1;
    @try {
        status = run(argv[1], className, input);
    } @catch (NSException *failure) {
        fprintf(stderr, "%s\n", [[failure reason] UTF8String]);
    }
    [pool release];
    return status;
}
