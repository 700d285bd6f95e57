// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_THREAD_ANNOTATIONS_H
#define KORVO_PLATFORM_THREAD_ANNOTATIONS_H

// What Clang's thread-safety analysis reads; nothing for other compilers. It looks into no constructor, destructor or
// catch handler.

#if defined(__clang__)
#define KORVO_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define KORVO_THREAD_ATTRIBUTE(attribute)
#endif

#define KORVO_CAPABILITY(name) KORVO_THREAD_ATTRIBUTE(capability(name))
#define KORVO_SCOPED_CAPABILITY KORVO_THREAD_ATTRIBUTE(scoped_lockable)
#define KORVO_GUARDED_BY(mutex) KORVO_THREAD_ATTRIBUTE(guarded_by(mutex))
#define KORVO_ACQUIRE(...) KORVO_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define KORVO_RELEASE(...) KORVO_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define KORVO_REQUIRES(...) KORVO_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define KORVO_EXCLUDES(...) KORVO_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define KORVO_NO_ANALYSIS KORVO_THREAD_ATTRIBUTE(no_thread_safety_analysis)

#endif
