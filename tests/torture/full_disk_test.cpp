// SPDX-License-Identifier: Apache-2.0
// The service while the disk is full that its store, its pictures and its capture are on, and where its output goes.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "emulator/emulator.h"
#include "korvo_api_action_engine.h"
#include "processes/child.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/service_child.h"
#include "support/workspace.h"

namespace torture {

namespace {

using namespace end_to_end;
namespace fs = std::filesystem;

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
constexpr auto refused = KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE;
constexpr auto gone = KORVO_CORE_STATUS_DISABLED_TARGET;

/// More than there is to tell of a disk that is full for a while; a loop that logs writes thousands.
constexpr std::ptrdiff_t most_lines = 100;

/// A disk that can be filled while the service is at work on it.
class Disk {
  public:
    Disk() = default;
    virtual ~Disk() = default;
    Disk(Disk const &) = delete;
    Disk &operator=(Disk const &) = delete;

    /// Its name for the service, and for this process.
    virtual fs::path folder() const = 0;
    virtual fs::path seen() const = 0;
    /// What starts the service so that it has this disk; one that starts while it is full has another.
    virtual Command command(std::vector<std::string> options) const = 0;
    virtual Command commandWhileFull(std::vector<std::string> options) const = 0;
    virtual void fill(pid_t service) = 0;
    virtual void makeRoom(pid_t service) = 0;
};

/// One on which the process can make no file longer. Everybody may do that to a process of their own.
class FilesThatCannotGrow : public Disk {
  public:
    fs::path folder() const override { return folder_; }
    fs::path seen() const override { return folder_; }
    Command command(std::vector<std::string> options) const override {
        return Service::command(std::move(options));
    }
    Command commandWhileFull(std::vector<std::string> options) const override {
        Command command = Service::command(std::move(options));
        command.arguments.insert(command.arguments.begin(), {"--fsize=0:", command.program});
        command.program = "/usr/bin/prlimit";
        command.is_of_this_machine = true;
        return command;
    }
    void fill(pid_t service) override {
        ASSERT_EQ(prlimit(service, RLIMIT_FSIZE, nullptr, &before_), 0);
        rlimit none = before_;
        none.rlim_cur = 0;
        ASSERT_EQ(prlimit(service, RLIMIT_FSIZE, &none, nullptr), 0);
    }
    void makeRoom(pid_t service) override { ASSERT_EQ(prlimit(service, RLIMIT_FSIZE, &before_, nullptr), 0); }

  private:
    fs::path folder_ = Workspace::ofThisProgram().newFolder("disk");
    rlimit before_ = {};
};

/// A real file system of 1 MiB, in a namespace of this user, which a process holds.
class SmallDisk : public Disk {
  public:
    SmallDisk() {
        Command command;
        command.program = "/usr/bin/unshare";
        command.arguments = {
            "--user",        "--map-root-user",
            "--mount",       "sh",
            "-ec",           "mount -t tmpfs -o size=1m none \"$0\"; echo mounted; exec sleep infinity",
            folder_.string()};
        command.ends_with_us = true;
        command.is_of_this_machine = true;
        holder_ = std::make_unique<Child>(command);
    }
    bool isThere() const { return holder_->out().waitFor("mounted\n"); }
    std::string whyNot() const { return holder_->errors().text(); }

    fs::path folder() const override { return folder_; }
    fs::path seen() const override {
        return "/proc/" + std::to_string(holder_->pid()) + "/root" + folder_.string();
    }
    Command command(std::vector<std::string> options) const override {
        Command command = Service::command(std::move(options));
        command.arguments.insert(command.arguments.begin(),
                                 {"--preserve-credentials", "--user", "--mount", "--target",
                                  std::to_string(holder_->pid()), command.program});
        command.program = "/usr/bin/nsenter";
        command.is_of_this_machine = true;
        return command;
    }
    Command commandWhileFull(std::vector<std::string> options) const override {
        return command(std::move(options));
    }
    void fill(pid_t) override {
        std::ofstream file(filler(), std::ios::binary);
        std::string const page(4096, 'x');
        while (file.write(page.data(), static_cast<std::streamsize>(page.size())).flush()) {
        }
        file.close();
        ASSERT_EQ(fs::space(seen()).available, 0U);
    }
    void makeRoom(pid_t) override { ASSERT_TRUE(fs::remove(filler())); }

  private:
    fs::path filler() const { return seen() / "filler"; }

    fs::path folder_ = Workspace::ofThisProgram().newFolder("disk");
    std::unique_ptr<Child> holder_;
};

class FullDisk : public ::testing::Test {
  protected:
    static std::vector<std::string> options(fs::path const &disk, std::string const &store) {
        return {"--store",     (disk / store).string(),
                "--snapshots", (disk / "pictures").string(),
                "--outbox",    (disk / "out").string(),
                "--capture",   (disk / "capture").string(),
                "--log-level", "info"};
    }
    static void stop(Child &child) {
        stopService(child);
        auto const log = child.errors().text();
        EXPECT_LE(std::count(log.begin(), log.end(), '\n'), most_lines) << log;
    }
    static unsigned int create(Client const &client, std::string const &name, Values const &inputs) {
        Answer const answer = operation(name).send(client.handle(), nullptr, inputs);
        EXPECT_EQ(answer.status, done) << name;
        return answer.status == done ? std::get<Number>(answer.results.at(0)) : 0;
    }
    static std::set<std::string> washers(Client const &client) {
        std::set<std::string> names;
        Answer const actions = operation("get_actions").send(client.handle(), nullptr, {});
        EXPECT_EQ(actions.status, done);
        for (unsigned int const id : std::get<Numbers>(actions.results.at(0))) {
            Answer const washer = operation("get_washer_action").send(client.handle(), nullptr, {id});
            if (washer.status == done) {
                names.insert(std::get<Text>(washer.results.at(0)));
            }
        }
        return names;
    }
    static std::set<std::string> names(fs::path const &folder) {
        std::set<std::string> found;
        for (auto const &entry : fs::directory_iterator(folder)) {
            found.insert(entry.path().filename().string());
        }
        return found;
    }
    /// An event that runs a snapshot and an upload: how they end.
    static std::vector<bool> run(Client const &client, EventRecorder const &recorder) {
        std::size_t const before = recorder.count();
        EXPECT_EQ(operation("onvif_event")
                      .send(client.handle(), nullptr, {"", "<fired/>", Texts{}, Texts{}})
                      .status,
                  done);
        EXPECT_TRUE(recorder.waitForCount(before + 2));
        std::vector<bool> succeeded;
        auto const events = recorder.events();
        for (std::size_t n = before; n < events.size(); ++n) {
            succeeded.push_back(events[n].success != 0);
        }
        return succeeded;
    }

    static void expectItIsSurvivedOn(Disk &disk);
};

void FullDisk::expectItIsSurvivedOn(Disk &disk) {
    std::set<std::string> kept;
    std::unique_ptr<Child> service = startService(disk.command(options(disk.folder(), "store")));
    ASSERT_TRUE(isReady(*service)) << service->errors().text();
    EventRecorder recorder;
    {
        Client client(Events::subscribed);
        recorder.registerOn(client);
        unsigned int const trigger =
            create(client, "create_onvif_trigger", {"every", "", "", "", Texts{}, Texts{}});
        for (unsigned int const action :
             {create(client, "create_snapshot_action", {"picture", "door.jpg"}),
              create(client, "create_ftp_action", {"upload", "server", "user", "secret", "path", "file"})}) {
            EXPECT_EQ(
                operation("create_association").send(client.handle(), nullptr, {trigger, action}).status,
                done);
        }
        EXPECT_EQ(run(client, recorder), (std::vector<bool>{true, true}));
        auto const pictures = names(disk.seen() / "pictures");
        auto const uploads = names(disk.seen() / "out");
        EXPECT_EQ(pictures, std::set<std::string>{"door.jpg"});
        EXPECT_EQ(uploads.size(), 1U);
        auto const size = fs::file_size(disk.seen() / "pictures" / "door.jpg");

        disk.fill(service->pid());
        std::size_t refusals = 0;
        for (int n = 0; n < 8; ++n) {
            std::string const name = std::to_string(n) + std::string(10'000, 'n');
            auto const status =
                operation("create_washer_action").send(client.handle(), nullptr, {name}).status;
            EXPECT_TRUE(status == done || status == refused) << status;
            if (status == done) {
                kept.insert(name);
            } else {
                ++refusals;
            }
        }
        EXPECT_GT(refusals, 4U) << "the disk was not full";
        EXPECT_EQ(washers(client), kept);
        EXPECT_EQ(run(client, recorder), (std::vector<bool>{false, false}));
        EXPECT_EQ(names(disk.seen() / "pictures"), pictures);
        EXPECT_EQ(names(disk.seen() / "out"), uploads);
        EXPECT_EQ(fs::file_size(disk.seen() / "pictures" / "door.jpg"), size) << "the old one stays";
        for (char const *const words : {"did not take the change: ", "snapshot action 1 \"picture\" failed: ",
                                        "the capture lacks messages: "}) {
            EXPECT_TRUE(service->errors().waitFor(words)) << words;
        }
        // One that starts now says why it cannot.
        auto another = options(disk.folder(), "another-store");
        another.insert(another.end(), {"--target", "another"});
        std::unique_ptr<Child> const refused_one = startService(disk.commandWhileFull(another));
        EXPECT_EQ(refused_one->wait(), exited(1));
        EXPECT_NE(refused_one->errors().text().find("the store \"" +
                                                    (disk.folder() / "another-store").string() + "\": "),
                  std::string::npos)
            << refused_one->errors().text();

        disk.makeRoom(service->pid());
        for (std::string const name : {"later", "at last"}) {
            create(client, "create_washer_action", {name});
            kept.insert(name);
        }
        EXPECT_EQ(run(client, recorder), (std::vector<bool>{true, true}));
        recorder.unregisterFrom(client);
    }
    stop(*service);

    auto again = options(disk.folder(), "store");
    // What was captured can be read, whatever is missing in it.
    again.insert(again.end(), {"--replay", again[7]});
    again.erase(again.begin() + 6, again.begin() + 8);
    service = startService(disk.command(again));
    EXPECT_TRUE(isReady(*service)) << service->errors().text();
    stop(*service);
    again.resize(again.size() - 2);
    service = startService(disk.command(again));
    ASSERT_TRUE(isReady(*service)) << service->errors().text();
    {
        Client const client;
        EXPECT_EQ(washers(client), kept);
    }
    stop(*service);
}

TEST_F(FullDisk, OfFilesThatCannotGrowIsToldOfAndSurvived) {
    if (emulator::present) {
        GTEST_SKIP() << "the limit would be the emulator's own";
    }
    FilesThatCannotGrow disk;
    expectItIsSurvivedOn(disk);
}

TEST_F(FullDisk, OfAFileSystemOfItsOwnIsToldOfAndSurvived) {
    if (emulator::present) {
        GTEST_SKIP() << "what starts the service there is no program of the camera";
    }
    SmallDisk disk;
    if (!disk.isThere()) {
        GTEST_SKIP() << "this user makes no file systems here: " << disk.whyNot();
    }
    expectItIsSurvivedOn(disk);
}

/// A log that goes to a full disk is lost, and nothing else.
TEST_F(FullDisk, ThatTheOutputGoesToKeepsNobodyFromTheService) {
    Command command = Service::command({});
    command.arguments = {"-c", R"("$0" "$@" --log-level debug >/dev/full 2>/dev/full & child=$!
                               trap 'kill "$child"' TERM; wait "$child"; wait "$child")"};
    for (std::string const &word : emulator::wordsToStart(command.program)) {
        command.arguments.push_back(word);
    }
    command.program = "/bin/sh";
    command.is_of_this_machine = true;
    std::unique_ptr<Child> const service = startService(command);
    Client const client;
    korvo_core_status status = gone;
    (void)becomesTrue([&] {
        status = operation("get_actions").send(client.handle(), nullptr, {}).status;
        return status != gone;
    });
    EXPECT_EQ(status, done);
    EXPECT_EQ(create(client, "create_washer_action", {"w"}), 1U);
    stop(*service);
}

}  // namespace

}  // namespace torture
