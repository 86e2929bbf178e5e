// Owners of what the provider hands out to the bridge, so that it goes back on every path.
#pragma once

#include "net/mg_trelm.h"

// A block that the provider fills.
class TrelmBlock {
public:
    TrelmBlock(MGTrelm& trelm, void* context) : trelm_(trelm), context_(context) {}
    ~TrelmBlock() { trelm_.MemBlkFree(context_, block); }
    TrelmBlock(const TrelmBlock&) = delete;
    TrelmBlock& operator=(const TrelmBlock&) = delete;

    mem_blk block;

private:
    MGTrelm& trelm_;
    void* context_;
};
