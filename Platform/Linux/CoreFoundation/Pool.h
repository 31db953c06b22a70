// An autorelease pool for one scope: without any, every autoreleased object would print a warning.
#pragma once

#import <Foundation/Foundation.h>

namespace Platform {
class CPool {
public:
    CPool() : mPool([[NSAutoreleasePool alloc] init]) {}
    ~CPool() { [mPool drain]; }
    CPool(const CPool&) = delete;
    CPool& operator=(const CPool&) = delete;

private:
    NSAutoreleasePool* mPool;
};
} // namespace Platform
