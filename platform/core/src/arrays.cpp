// SPDX-License-Identifier: Apache-2.0
#include "korvo_core.h"
#include "list_memory.h"

using namespace platform;

unsigned char **korvo_core_alloc_bool_array(unsigned int count) {
    return alloc_list<unsigned char>(count);
}

unsigned int **korvo_core_alloc_uint_array(unsigned int count) {
    return alloc_list<unsigned int>(count);
}

int **korvo_core_alloc_int_array(unsigned int count) {
    return alloc_list<int>(count);
}

double **korvo_core_alloc_double_array(unsigned int count) {
    return alloc_list<double>(count);
}

char **korvo_core_alloc_string_array(unsigned int count) {
    return alloc_slots<char>(count);
}

void korvo_core_free_bool_array(unsigned char **list) {
    free_list(list);
}

void korvo_core_free_uint_array(unsigned int **list) {
    free_list(list);
}

void korvo_core_free_int_array(int **list) {
    free_list(list);
}

void korvo_core_free_double_array(double **list) {
    free_list(list);
}

void korvo_core_free_string_array(char **list) {
    free_list(list);
}
