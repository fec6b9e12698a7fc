/* Bytes that grow. */
#ifndef BYTES_H
#define BYTES_H

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

typedef struct bytes {
    unsigned char* at; /* from malloc */
    size_t size;
} bytes;

static inline void add(bytes* to, const void* from, size_t count) {
    to->at = (unsigned char*)realloc(to->at, to->size + count + 1); /* C++ reads this too */
    if (count) memcpy(to->at + to->size, from, count);
    to->size += count;
}

static inline int equal(bytes a, bytes b) {
    return a.size == b.size && (a.size == 0 || memcmp(a.at, b.at, a.size) == 0);
}

static inline void set_le32(unsigned char* place, uint32_t value) {
    for (int i = 0; i < 4; ++i) place[i] = (unsigned char)(value >> (8 * i));
}

static inline void set_be32(unsigned char* place, uint32_t value) {
    for (int i = 0; i < 4; ++i) place[i] = (unsigned char)(value >> (24 - 8 * i));
}

/* Little-endian; what lies beyond the end counts as 0. */
static inline uint32_t number_at(bytes file, size_t place) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4 && place + i < file.size; ++i) value |= (uint32_t)file.at[place + i] << 8 * i;
    return value;
}

/* A RIFF chunk; `size_told` in place of its size where that isn't 0. */
static inline void add_chunk(bytes* to, const char* id, const void* content, size_t size,
                             uint32_t size_told) {
    unsigned char told[4];
    set_le32(told, size_told ? size_told : (uint32_t)size);
    add(to, id, 4);
    add(to, told, 4);
    add(to, content, size);
    if (size & 1) add(to, "", 1);
}

#endif
