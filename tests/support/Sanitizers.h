// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// MV_TEST_SANITIZED is 1 where a sanitizer intercepts the heap and the mutex calls itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MV_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define MV_TEST_SANITIZED 1
#endif
#endif

#if ! defined(MV_TEST_SANITIZED)
#define MV_TEST_SANITIZED 0
#endif

// The replacements rest on glibc's second names for its allocator.
#if ! MV_TEST_SANITIZED && defined(__GLIBC__)
#define MV_TEST_INTERPOSES 1
#else
#define MV_TEST_INTERPOSES 0
#endif
