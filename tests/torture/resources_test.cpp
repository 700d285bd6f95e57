// SPDX-License-Identifier: Apache-2.0
// Real limits of the kernel for the service and for a client: few descriptors, and little address space.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "emulator/emulator.h"
#include "korvo_api_action_engine.h"
#include "platform_contract/development/raw_socket.h"
#include "support/long_form.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/service_child.h"
#include "support/workspace.h"

namespace torture {

namespace {

using namespace end_to_end;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
constexpr auto lost = KORVO_CORE_STATUS_IPC_FAILED;
constexpr auto refused = KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE;
constexpr auto gone = KORVO_CORE_STATUS_DISABLED_TARGET;
constexpr auto no_memory = KORVO_CORE_STATUS_ALLOC_FAILED;

constexpr std::size_t kibibyte = 1024;
constexpr std::size_t mebibyte = 1024 * kibibyte;

/// More lines than any of the failures below has to tell; a loop that logs writes thousands.
constexpr std::size_t most_lines = 60;

std::size_t linesOf(std::string const &text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// Tells at the end how much was tried.
class Tally : public ::testing::Environment {
  public:
    void TearDown() override { std::printf("torture: %zu limits\n", limits); }

    std::size_t limits = 0;
};

Tally *const tally = static_cast<Tally *>(::testing::AddGlobalTestEnvironment(new Tally));

/// The soft limit of a process, until the end of its life. It can be lowered below what is in use.
class Limit {
  public:
    Limit(pid_t process, __rlimit_resource resource, rlim_t value) : process_(process), resource_(resource) {
        EXPECT_EQ(prlimit(process_, resource_, nullptr, &before_), 0);
        rlimit lowered = before_;
        lowered.rlim_cur = value;
        EXPECT_EQ(prlimit(process_, resource_, &lowered, nullptr), 0);
        ++tally->limits;
    }
    ~Limit() {
        // The process may have ended.
        EXPECT_TRUE(prlimit(process_, resource_, &before_, nullptr) == 0 || errno == ESRCH);
    }
    Limit(Limit const &) = delete;
    Limit &operator=(Limit const &) = delete;

  private:
    pid_t const process_;
    __rlimit_resource const resource_;
    rlimit before_ = {};
};

/// A number of /proc/<process>/statm, in bytes: 0 is the address space in use, 5 what of it can be written to.
std::size_t sizeOf(pid_t process, std::size_t column) {
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::size_t pages = 0;
    for (std::size_t n = 0; n <= column; ++n) {
        file >> pages;
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The limit that leaves a process so many descriptors.
rlim_t descriptorsOf(pid_t process, std::size_t more) {
    std::set<rlim_t> used;
    for (auto const &entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
        used.insert(std::stoul(entry.path().filename().string()));
    }
    rlim_t limit = 0;
    while (used.count(limit) != 0 || more != 0) {
        more -= used.count(limit) == 0 ? 1U : 0U;
        ++limit;
    }
    return limit;
}

/// A frame of the largest size but for its last bytes.
std::string begunFrame() {
    std::string frame("KV\x01\x01\0\0\x10\0", 8);
    frame.append(mebibyte - 4 * kibibyte, 'x');
    return frame;
}

class FewResources : public ::testing::Test {
  protected:
    void SetUp() override {
        if (emulator::present) {
            GTEST_SKIP() << "the emulator has descriptors and memory of its own, and is what would fail";
        }
        setenv("KORVO_LOG_LEVEL", "warning", 1);
    }

    /// The service under this limit from its start on; what it wrote to standard error where it did not start.
    static std::unique_ptr<Child> start(std::string const &limit) {
        ++tally->limits;
        Command command = Service::command({"--store", newStore()});
        command.arguments.insert(command.arguments.begin(), {limit, command.program});
        command.program = "/usr/bin/prlimit";
        command.is_of_this_machine = true;
        return startService(std::move(command));
    }
    /// It ended by itself and said what it was short of. 127 is the loader's, which then has said it.
    static void expectRefusal(Child &child, std::string const &what) {
        auto const exit = child.wait();
        ASSERT_TRUE(exit.has_value()) << what;
        // GnuTLS, which libcurl brings, aborts a process in whose start, before main(), it has too little.
        bool const is_before_us = *exit == killedBy(SIGABRT) &&
                                  child.errors().text().find("GnuTLS initialization") != std::string::npos;
        EXPECT_TRUE(*exit == exited(1) || *exit == exited(127) || is_before_us)
            << what << ": " << *exit << child.errors().text();
        EXPECT_NE(child.errors().text(), "") << what;
        EXPECT_LE(linesOf(child.errors().text()), 4U) << what << ": " << child.errors().text();
    }

    static std::string newStore() {
        return (Workspace::ofThisProgram().newFolder("store") / "catalogue.db").string();
    }

    /// A new client is answered.
    static void expectServed() {
        Client client;
        EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    }
};

TEST_F(FewResources, OfDescriptorsLetTheServiceStartOrSayWhy) {
    bool has_started = false;
    unsigned int limit = 3;
    for (; limit < 64 && !has_started; ++limit) {
        std::string const what = std::to_string(limit) + " descriptors";
        std::unique_ptr<Child> const child = start("--nofile=" + std::to_string(limit) + ":");
        has_started = isReady(*child);
        if (!has_started) {
            expectRefusal(*child, what);
            continue;
        }
        // Nothing is left for a client, who gets an answer as soon as there is.
        {
            Client client;
            korvo_core_status const status =
                operation("get_actions").sendWithTimeout(client.handle(), nullptr, 300, {}).status;
            EXPECT_TRUE(status == done || status == lost) << what << ": " << status;
            Limit const more(child->pid(), RLIMIT_NOFILE, 64);
            EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done) << what;
            stopService(*child);
        }
        EXPECT_LE(linesOf(child->errors().text()), most_lines) << child->errors().text();
    }
    EXPECT_GT(limit, 4U) << "no limit was too low";
    EXPECT_TRUE(has_started);
}

TEST_F(FewResources, OfDescriptorsKeepNothingFromThoseWhoAreConnected) {
    Service service({"--store", newStore()});
    Client known;
    EXPECT_EQ(operation("get_actions").send(known.handle(), nullptr, {}).status, done);
    {
        Limit const few(service.pid(), RLIMIT_NOFILE, descriptorsOf(service.pid(), 3));
        std::vector<RawSocket> peers;
        for (int n = 0; n < (isLong() ? 400 : 40); ++n) {
            peers.push_back(RawSocket::connect(Service::socketPath()));
            ASSERT_TRUE(peers.back().isOpen());
            EXPECT_EQ(operation("create_washer_action").send(known.handle(), nullptr, {"w"}).status, done);
        }
        EXPECT_TRUE(service.waitForLog("cannot accept a connection")) << "the limit was not reached";
    }
    expectServed();
    EXPECT_LE(linesOf(service.log()), most_lines) << service.log();
}

TEST_F(FewResources, OfAddressSpaceLetTheServiceStartOrSayWhy) {
    bool has_started = false;
    std::size_t size = 6 * mebibyte;
    std::size_t refusals = 0;
    for (; size < 1024 * mebibyte && !has_started; size += (isLong() ? 64 * kibibyte : mebibyte)) {
        std::string const what = std::to_string(size / kibibyte) + " KiB of address space";
        std::unique_ptr<Child> const child = start("--as=" + std::to_string(size) + ":");
        has_started = isReady(*child);
        if (!has_started) {
            expectRefusal(*child, what);
            ++refusals;
            continue;
        }
        {
            Client client;
            korvo_core_status const status =
                operation("get_actions").send(client.handle(), nullptr, {}).status;
            EXPECT_TRUE(status == done || status == lost) << what << ": " << status;
        }
        {
            Limit const more(child->pid(), RLIMIT_AS, RLIM_INFINITY);
            expectServed();
            stopService(*child);
        }
        EXPECT_LE(linesOf(child->errors().text()), most_lines) << child->errors().text();
    }
    EXPECT_GT(refusals, 0U);
    EXPECT_TRUE(has_started);
}

TEST_F(FewResources, OfAddressSpaceLoseNothingThatWasAnswered) {
    Service service({"--store", newStore()});
    std::set<std::string> kept;
    std::set<std::string> unsure;
    std::size_t failures = 0;
    auto const create = [&](Client const &client, std::string const &name) {
        korvo_core_status const status =
            operation("create_washer_action").send(client.handle(), nullptr, {name}).status;
        EXPECT_TRUE(status == done || status == refused || status == lost || status == gone) << status;
        if (status == done) {
            kept.insert(name);
        } else if (status == lost) {
            // It may be done, and its answer lost.
            unsure.insert(name);
        }
        failures += status == done ? 0U : 1U;
    };
    std::string const begun = begunFrame();
    for (std::size_t room = 0; room <= mebibyte; room = room == 0 ? 16 * kibibyte : 4 * room) {
        Client client;
        EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
        std::vector<RawSocket> peers;
        // What is reserved may not become writable either.
        Limit const little(service.pid(), RLIMIT_DATA, sizeOf(service.pid(), 5) + room);
        for (int n = 0; n < (isLong() ? 60 : 6); ++n) {
            peers.push_back(RawSocket::connect(Service::socketPath()));
            (void)peers.back().send(begun);
            create(client, std::to_string(room) + " " + std::to_string(n) + std::string(50'000, 'n'));
            (void)operation("get_actions").send(client.handle(), nullptr, {});
        }
    }
    EXPECT_GT(failures, 0U) << "address space never ran out";
    EXPECT_TRUE(service.running()) << service.log();
    for (int time = 0; time < 2; ++time) {
        Client client;
        Answer const ids = operation("get_actions").send(client.handle(), nullptr, {});
        ASSERT_EQ(ids.status, done);
        std::set<std::string> found;
        for (unsigned int const id : std::get<Numbers>(ids.results.at(0))) {
            Answer const action = operation("get_washer_action").send(client.handle(), nullptr, {id});
            ASSERT_EQ(action.status, done);
            found.insert(std::get<Text>(action.results.at(0)));
        }
        for (std::string const &name : kept) {
            EXPECT_EQ(found.count(name), 1U) << "answered with 0 and not there: " << name.substr(0, 10);
        }
        for (std::string const &name : found) {
            EXPECT_EQ(kept.count(name) + unsure.count(name), 1U)
                << "refused and there: " << name.substr(0, 10);
        }
        // And what it has written says the same.
        EXPECT_LE(linesOf(service.log()), 20 * most_lines) << service.log();
        service.stop();
        service.start();
    }
}

/// All memory of this process that an allocation could get, but for what is given back.
class Exhausted {
  public:
    explicit Exhausted(std::size_t room)
        : space_(getpid(), RLIMIT_AS, sizeOf(getpid(), 0)),
          data_(getpid(), RLIMIT_DATA, sizeOf(getpid(), 5)) {
        for (std::size_t size = mebibyte; size >= sizeof(Block); size = size > 64 ? size / 2 : size - 16) {
            while (void *const memory = std::malloc(size)) {
                last_ = new (memory) Block{last_, size};
            }
        }
        // From the smallest on: what is free is in pieces, as it is where memory runs out.
        for (std::size_t given_back = 0; given_back < room && last_ != nullptr;) {
            given_back += last_->size;
            free(last_);
        }
    }
    ~Exhausted() {
        while (last_ != nullptr) {
            free(last_);
        }
    }
    Exhausted(Exhausted const &) = delete;
    Exhausted &operator=(Exhausted const &) = delete;

  private:
    struct Block {
        Block *before;
        std::size_t size;
    };
    void free(Block *&block) { std::free(std::exchange(block, block->before)); }

    Limit space_;
    Limit data_;
    Block *last_ = nullptr;
};

std::atomic<int> callbacks{0};

/// What a client did, without a word of memory of its own.
struct Life {
    korvo_core_status opened = done;
    korvo_core_status asked = done;
    korvo_core_status sent = done;
    bool has_called_back = true;

    bool isWhole() const { return opened == done && asked == done && sent == done && has_called_back; }
};

/// The whole life of a handle.
Life live(void *logging) {
    Life life;
    void *handle = nullptr;
    life.opened = korvo_api_action_engine_initiator_init(nullptr, logging, &handle, 1, "few");
    if (life.opened != done) {
        return life;
    }
    unsigned int **ids = nullptr;
    unsigned int **types = nullptr;
    life.asked =
        korvo_api_action_engine_get_actions_send_with_timeout(handle, nullptr, long_timeout_ms, &ids, &types);
    if (life.asked == done) {
        korvo_core_free_uint_array(ids);
        korvo_core_free_uint_array(types);
    }
    callbacks = 0;
    life.sent = korvo_api_action_engine_get_actions_send_async(
        handle, nullptr,
        [](char *, korvo_core_status, unsigned int **, unsigned int **, void *) { ++callbacks; }, nullptr);
    // A response for whose reading there is no memory is told in the log alone.
    (void)becomesTrue([&] { return life.sent != done || callbacks != 0; }, milliseconds(1000));
    life.has_called_back = life.sent != done || callbacks == 1;
    EXPECT_EQ(korvo_api_action_engine_initiator_deinit(handle), done);
    return life;
}

void expectStatuses(Life const &life, bool has_descriptors) {
    EXPECT_TRUE(life.opened == done || life.opened == no_memory) << life.opened;
    EXPECT_TRUE(life.asked == done || life.asked == no_memory || life.asked == lost || life.asked == gone)
        << life.asked;
    EXPECT_TRUE(life.sent == done || life.sent == no_memory || life.sent == lost || life.sent == gone)
        << life.sent;
    EXPECT_TRUE(life.has_called_back || has_descriptors) << "taken, and never called back";
}

TEST_F(FewResources, OfDescriptorsGiveAClientAStatusAndItWorksAfterwards) {
    Service service;
    void *logging = nullptr;
    ASSERT_EQ(korvo_core_logging_init("few", &logging), done);
    ASSERT_TRUE(live(logging).isWhole());
    std::size_t const mark = ErrorOutput::ofThisProgram().mark();
    // Of one that was connected before, too.
    Client client;
    std::size_t failures = 0;
    bool was_whole = false;
    for (unsigned int more = 0; !was_whole && more < 40; ++more) {
        SCOPED_TRACE(std::to_string(more) + " descriptors more than are in use");
        service.kill();
        service.start();
        Life life;
        korvo_core_status again = done;
        {
            Limit const few(getpid(), RLIMIT_NOFILE, descriptorsOf(getpid(), more));
            life = live(logging);
            again = operation("get_triggers").send(client.handle(), nullptr, {}).status;
        }
        was_whole = life.isWhole();
        failures += was_whole ? 0U : 1U;
        expectStatuses(life, false);
        EXPECT_TRUE(again == done || again == no_memory || again == lost || again == gone) << again;
        EXPECT_TRUE(live(logging).isWhole());
        EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).status, done);
    }
    EXPECT_TRUE(was_whole);
    EXPECT_GT(failures, 2U);
    EXPECT_LE(linesOf(ErrorOutput::ofThisProgram().since(mark)), 20 * most_lines);
    EXPECT_EQ(korvo_core_logging_deinit(logging), done);
}

/// Does this in a child, whose threads and memory are its own.
void expectInChild(void (*work)(std::size_t), std::size_t room) {
    pid_t const child = fork();
    if (child == 0) {
        (void)alarm(static_cast<unsigned int>(patience.count() / 1000));
        work(room);
        _exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << room << " bytes left: ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0) << room << " bytes left";
}

TEST_F(FewResources, OfMemoryGiveAClientAStatusAndItWorksAfterwards) {
    Service const service;
    std::size_t room = 0;
    while (room <= mebibyte) {
        expectInChild(
            [](std::size_t bytes) {
                void *logging = nullptr;
                ASSERT_EQ(korvo_core_logging_init("little", &logging), done);
                ASSERT_TRUE(live(logging).isWhole());
                Life life;
                {
                    Exhausted const exhausted(bytes);
                    life = live(logging);
                }
                expectStatuses(life, true);
                EXPECT_TRUE(bytes != 0 || !life.isWhole()) << "memory did not run out";
                EXPECT_TRUE(live(logging).isWhole()) << "it does not work afterwards";
                EXPECT_EQ(korvo_core_logging_deinit(logging), done);
            },
            room);
        room = isLong() ? room + 2 * kibibyte : room == 0 ? 64 : 2 * room;
    }
}

}  // namespace

}  // namespace torture
