// The one call of Quartz that the application makes.
#ifndef VELNOR_SDK_COREGRAPHICS_H
#define VELNOR_SDK_COREGRAPHICS_H

#include <stdint.h>

typedef double CGFloat;
typedef struct CGPoint {
    CGFloat x, y;
} CGPoint;
typedef struct CGSize {
    CGFloat width, height;
} CGSize;
typedef struct CGRect {
    CGPoint origin;
    CGSize size;
} CGRect;
typedef uint32_t CGDirectDisplayID;
enum { kCGNullDirectDisplay = 0 };
#ifdef __cplusplus
extern "C" {
#endif
CGDirectDisplayID CGMainDisplayID(void);
#ifdef __cplusplus
}
#endif
#endif
