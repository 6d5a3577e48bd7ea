#include "quorvane/esRenderer.h"

int ClipABC_ESRenderer(int p, int max, int min) {
    if (p > max) return max;
    if (p < min) return min;
    return p;
}
