// SPDX-License-Identifier: Apache-2.0
// What the client library costs one process: the memory that it makes dirty, step by step, and the time it takes to
// load, beside that of a library of known size.

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

#ifdef KORVO_WITH_LUA
#include <lua.hpp>

#include "lua/module.h"
#endif

namespace {

/// Dirty memory of this process that it shares with nobody, in KiB.
long dirtyMemory() {
    std::ifstream file("/proc/self/smaps_rollup");
    for (std::string word; file >> word;) {
        if (word == "Private_Dirty:") {
            long size = 0;
            file >> size;
            return size;
        }
    }
    throw std::runtime_error("/proc/self/smaps_rollup has no Private_Dirty");
}

class Steps {
  public:
    explicit Steps(Results &results) : results_(results) {}

    void done(char const *step) {
        long const now = dirtyMemory();
        auto const more = static_cast<double>(now - last_);
        results_.value("dirty memory", step, "KiB", {more, more, more});
        last_ = now;
    }

  private:
    Results &results_;
    long last_ = dirtyMemory();
};

void *load(char const *library) {
    void *const loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return loaded;
}

template <typename Function>
Function *find(void *library, char const *name) {
    void *const symbol = dlsym(library, name);
    if (symbol == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return reinterpret_cast<Function *>(symbol);
}
#define FIND(library, name) find<decltype(name)>(library, #name)

void measureMemory(Run &run) {
    ServiceProcess const service(KORVO_SIMULATOR);
    Steps steps(run.results);
    void *const library = load(KORVO_LIBRARY);
    steps.done("library loaded");

    void *handle = nullptr;
    require(FIND(library, korvo_api_action_engine_initiator_init)(nullptr, nullptr, &handle, 0, "bench"),
            "initiator_init");
    steps.done("one client object");
    auto *const get_action_counts = FIND(library, korvo_api_action_engine_get_action_counts_send);
    auto *const free_list = FIND(library, korvo_core_free_uint_array);
    for (int count = 0; count < 1000; ++count) {
        unsigned int total = 0;
        unsigned int **types = nullptr;
        unsigned int **counts = nullptr;
        require(get_action_counts(handle, nullptr, &total, &types, &counts), "get_action_counts");
        free_list(types);
        free_list(counts);
    }
    steps.done("1,000 synchronous calls");

#ifdef KORVO_WITH_LUA
    lua_State *const L = luaL_newstate();
    luaL_openlibs(L);
    steps.done("a Lua state with Lua's own libraries");
    lua_pushcfunction(L, FIND(library, luaopen_korvo_api_action_engine));
    require(lua_pcall(L, 0, 0, 0), "luaopen_korvo_api_action_engine");
    lua_gc(L, LUA_GCCOLLECT, 0);
    steps.done("the module in it");
    lua_close(L);
#endif
    require(FIND(library, korvo_api_action_engine_initiator_deinit)(handle), "initiator_deinit");
}

/// Microseconds that a new process takes to load a library and what that needs.
double loadTime(char const *library) {
    int pipe_ends[2];
    require(pipe(pipe_ends), "pipe");
    pid_t const child = fork();
    if (child == 0) {
        auto const start = std::chrono::steady_clock::now();
        bool const loaded = dlopen(library, RTLD_NOW | RTLD_LOCAL) != nullptr;
        double const time =
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
        bool const told = loaded && write(pipe_ends[1], &time, sizeof time) == sizeof time;
        _exit(told ? 0 : 1);
    }
    close(pipe_ends[1]);
    double time = 0;
    bool const heard = read(pipe_ends[0], &time, sizeof time) == sizeof time;
    close(pipe_ends[0]);
    waitpid(child, nullptr, 0);
    if (!heard) {
        throw std::runtime_error(std::string("cannot load ") + library);
    }
    return time;
}

void measureLoading(Run &run) {
    constexpr char const *yardstick = "libsqlite3.so.0";
    int const processes = run.rounds(101);
    std::vector<double> known;
    std::vector<double> ours;
    std::vector<double> ratios;
    for (int count = 0; count < processes; ++count) {
        known.push_back(loadTime(yardstick));
        ours.push_back(loadTime(KORVO_LIBRARY));
        ratios.push_back(ours.back() / known.back());
    }
    run.results.value("loading", yardstick, "us", spreadOf(known));
    run.results.value("loading", "ours", "us", spreadOf(ours));
    run.results.value("loading", "ratio", "", spreadOf(ratios));
}

void measure(Run &run) {
    // Pages of a library that was linked just now count as dirty until they are written back.
    sync();
    // Before anything else, since a library that is loaded already is not loaded again.
    measureLoading(run);
    measureMemory(run);
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, measure);
}
