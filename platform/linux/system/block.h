// Memory blocks of the platform. Large ones are mappings that are kept when they are freed, up to a
// bound, and handed out again: a page follows the page before without the kernel clearing fresh
// memory, and a block that grows moves its mapping instead of its bytes. Any thread.
//
// Under the address sanitizer and while a test makes calls fail (platform/fault.h) every block is
// plain heap memory, so that leaks and overruns are seen.
#pragma once

#include "platform/types.h"

// Returns bytes of memory (0 counts as 1), zero-filled on request, at least 16-byte aligned. Null
// when there is none. Memory of a large block is real only once it is written to. spares: how many
// more blocks of that size pages to come will want; they are made together with the first one.
void* AllocateBlock(SIZE_T bytes, bool zeroFilled, int spares = 0);

// Makes the block that large; what is added has no value. Returns its new place, or null, the block
// as it was. A growing block may take the room of the largest kept one.
void* ReallocateBlock(void* block, SIZE_T bytes);

// Null is allowed.
void FreeBlock(void* block);

// Whether freed blocks are kept from now on; without, what was kept goes back to the system. They
// are not until somebody asks for it.
void KeepFreedBlocks(bool keep);
