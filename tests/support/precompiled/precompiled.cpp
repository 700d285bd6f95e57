// SPDX-License-Identifier: Apache-2.0
// A library has a file; this one is only for its precompiled headers.
