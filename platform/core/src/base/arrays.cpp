// SPDX-License-Identifier: Apache-2.0
#include "base/list_memory.h"
#include "korvo_core.h"

using namespace platform;

unsigned char **korvo_core_alloc_bool_array(unsigned int count) {
    return allocList<unsigned char>(count);
}

unsigned int **korvo_core_alloc_uint_array(unsigned int count) {
    return allocList<unsigned int>(count);
}

int **korvo_core_alloc_int_array(unsigned int count) {
    return allocList<int>(count);
}

double **korvo_core_alloc_double_array(unsigned int count) {
    return allocList<double>(count);
}

char **korvo_core_alloc_string_array(unsigned int count) {
    return allocSlots<char>(count);
}

void korvo_core_free_bool_array(unsigned char **list) {
    freeList(list);
}

void korvo_core_free_uint_array(unsigned int **list) {
    freeList(list);
}

void korvo_core_free_int_array(int **list) {
    freeList(list);
}

void korvo_core_free_double_array(double **list) {
    freeList(list);
}

void korvo_core_free_string_array(char **list) {
    freeList(list);
}
