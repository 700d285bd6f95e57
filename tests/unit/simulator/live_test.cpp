// SPDX-License-Identifier: Apache-2.0
// What leaves the machine, with real servers on the loopback interface.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <filesystem>
#include <functional>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "live_blocks/live_blocks.h"
#include "processes/child.h"
#include "servers.h"
#include "simulator/runners/runner.h"
#include "simulator/runners/test_picture.h"
#include "support.h"

namespace simulator::runners::tests {

namespace {

using simulator::tests::PythonServer;
using simulator::tests::readFile;
using simulator::tests::RecordedLog;
using simulator::tests::SilentServer;
using simulator::tests::TemporaryFolder;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;
using testing::IsEmpty;

Values mailTo(std::string const &server, bool picture = false) {
    return {std::string("mail"),
            server,
            Texts{"to@x.org", "Anna <anna@x.org>"},
            Texts{"cc@x.org"},
            std::string("me@x.org"),
            std::string("door"),
            std::string("one\n.\ntwo"),
            picture,
            true};
}

Values uploadTo(std::string const &server, std::string const &path = "",
                std::string const &file = "a b.jpg") {
    return {std::string("upload"), server, std::string("anna"), std::string("secret"), path, file};
}

class Live : public testing::Test {
  protected:
    void start(Logins logins = {}, std::string const &authorities = "",
               milliseconds time_out = seconds(120)) {
        transfers.emplace(
            Transfers::Settings{time_out, authorities}, [] {}, log.log());
        runner.emplace(
            Runner::Folders{files.path(), outbox.path()}, [this] { return wall; },
            [] { return Clock::Time(); }, log.log(),
            Runner::Live{/*mail*/ true, /*ftp*/ true, std::move(logins), &*transfers});
    }

    void run(protocol::ActionType type, Values settings) {
        std::size_t const place = results.size();
        results.emplace_back();
        runner->run(Job{7, &action_kinds[type], std::move(settings), "Trigger 1 fired.\n"},
                    [this, place](RunResult const &result) { results[place] = result; });
    }
    /// The result of the n-th run, when it is over.
    RunResult wait(std::size_t place) {
        while (!results.at(place)) {
            runner->finish();
            std::this_thread::sleep_for(milliseconds(1));
        }
        return *results[place];
    }

    TemporaryFolder files;
    TemporaryFolder outbox;
    RecordedLog log;
    Wall wall{seconds(1795417140)};
    std::vector<std::optional<RunResult>> results;
    std::optional<Transfers> transfers;
    std::optional<Runner> runner;
};

}  // namespace

TEST_F(Live, AMailArrivesWithItsPictureAndTheEvent) {
    PythonServer const server({"smtp", files.path()});
    start();
    run(protocol::send_email, mailTo(server.address(), /*picture*/ true));
    RunResult const result = wait(0);
    EXPECT_TRUE(result.success) << result.words;
    EXPECT_EQ(result.words, "mail sent to 3 recipients through \"" + server.address() + "\"");
    EXPECT_TRUE(log.holds("5 e-mail action 7 \"mail\": mail sent to 3 recipients"));
    EXPECT_EQ(boost::json::parse(readFile(files / "1.envelope")),
              boost::json::parse(
                  R"({"from":"me@x.org","to":["to@x.org","anna@x.org","cc@x.org"],"tls":false,"login":""})"));
    EXPECT_EQ(readFile(files / "1.picture"), takeSnapshot(wall));
    std::string const text = readFile(files / "1.eml");
    EXPECT_THAT(text, HasSubstr("\r\nTo: to@x.org, Anna <anna@x.org>\r\nCc: cc@x.org\r\nSubject: door\r\n"));
    EXPECT_THAT(text, HasSubstr("\r\n\r\none\r\n.\r\ntwo\r\n\r\nTrigger 1 fired.\r\n"));
    EXPECT_THAT(outbox.names(), IsEmpty());
}

TEST_F(Live, AnUploadIsByteEqual) {
    PythonServer const server({"ftp", files.path()});
    std::filesystem::create_directories(files / "in/deep");
    start();
    run(protocol::ftp_upload, uploadTo(server.address(), "in/deep"));
    run(protocol::ftp_upload, uploadTo(server.address(), "/", "%0d#?.jpg"));
    run(protocol::ftp_upload, uploadTo(server.address(), "nowhere"));
    EXPECT_TRUE(wait(0).success) << wait(0).words;
    EXPECT_EQ(readFile(files / "in/deep/a b.jpg"), takeSnapshot(wall));
    EXPECT_TRUE(wait(1).success) << wait(1).words;
    EXPECT_EQ(readFile(files / "%0d#?.jpg"), takeSnapshot(wall));
    EXPECT_FALSE(wait(2).success);
    EXPECT_THAT(wait(2).words, HasSubstr("the upload was not taken by \"" + server.address() + "\": "));
    EXPECT_FALSE(log.holds("secret"));
}

TEST_F(Live, AServerThatHangsDelaysNobody) {
    SilentServer const silent;
    PythonServer const mails({"smtp", files.path()});
    PythonServer const uploads({"ftp", files.path()});
    start();
    run(protocol::send_email, mailTo(silent.address()));
    run(protocol::ftp_upload, uploadTo(silent.address()));
    run(protocol::send_email, mailTo(mails.address()));
    run(protocol::ftp_upload, uploadTo(uploads.address()));
    run(protocol::run_wiper, {std::string("wiper")});
    EXPECT_TRUE(results[4].has_value()) << "what does not leave the machine is over at once";
    EXPECT_TRUE(wait(2).success) << wait(2).words;
    EXPECT_TRUE(wait(3).success) << wait(3).words;
    EXPECT_FALSE(results[0] || results[1]) << "these still wait";
    runner.reset();
    transfers.reset();
    EXPECT_TRUE(log.holds("4 2 mails and uploads were given up at the end"));
}

TEST_F(Live, AServerThatHangsIsGivenUp) {
    SilentServer const silent;
    start({}, "", milliseconds(200));
    run(protocol::send_email, mailTo(silent.address()));
    run(protocol::ftp_upload, uploadTo(silent.address()));
    for (std::size_t const place : {0U, 1U}) {
        EXPECT_FALSE(wait(place).success);
        EXPECT_THAT(wait(place).words, testing::ContainsRegex("\"127.0.0.1:[0-9]+\": .*timed out"));
    }
}

TEST_F(Live, AQueueThatIsFullSaysSoAndLeavesRoomForOthers) {
    SilentServer const silent;
    SilentServer const other;
    start();
    for (int n = 0; n < 17; ++n) {
        run(protocol::send_email, mailTo(silent.address()));
    }
    EXPECT_FALSE(results[15].has_value());
    ASSERT_TRUE(results[16].has_value());
    EXPECT_EQ(results[16]->words,
              "the queue is full: 16 mails and uploads are on their way to \"" + silent.address() + "\"");
    run(protocol::send_email, mailTo(other.address()));
    EXPECT_FALSE(results[17].has_value());
}

TEST_F(Live, NobodyListens) {
    std::string address;
    { address = SilentServer().address(); }
    start();
    run(protocol::send_email, mailTo(address));
    EXPECT_FALSE(wait(0).success);
    EXPECT_THAT(wait(0).words, HasSubstr("the mail was not taken by \"" + address + "\": Failed to connect"));
}

TEST_F(Live, ALoginGoesToAServerWithTls) {
    processes::Command make;
    make.program = "/usr/bin/openssl";
    make.is_of_this_machine = true;
    make.arguments = {"req",
                      "-x509",
                      "-newkey",
                      "rsa:2048",
                      "-nodes",
                      "-days",
                      "2",
                      "-subj",
                      "/CN=localhost",
                      "-addext",
                      "subjectAltName=IP:127.0.0.1",
                      "-keyout",
                      outbox / "key.pem",
                      "-out",
                      outbox / "certificate.pem"};
    processes::Child openssl(make);
    ASSERT_EQ(openssl.wait(), processes::exited(0)) << openssl.errors().text();
    PythonServer const with_tls({"smtp", files.path(), outbox / "certificate.pem", outbox / "key.pem"});
    PythonServer const without_tls({"smtp", files.path()});
    Logins const logins{{"127.0.0.1", {"anna", "secret"}}};

    start(logins, outbox / "certificate.pem");
    run(protocol::send_email, mailTo(with_tls.address()));
    EXPECT_TRUE(wait(0).success) << wait(0).words;
    EXPECT_THAT(readFile(files / "1.envelope"),
                testing::AllOf(HasSubstr(R"("tls": true)"), HasSubstr(R"("login": "anna")")));
    run(protocol::send_email, mailTo(without_tls.address()));
    EXPECT_FALSE(wait(1).success);
    EXPECT_THAT(wait(1).words, HasSubstr("a login goes to servers with TLS only"));

    start({{"127.0.0.1", {"anna", "wrong"}}}, outbox / "certificate.pem");
    run(protocol::send_email, mailTo(with_tls.address()));
    EXPECT_FALSE(wait(2).success);

    // Nobody the machine believes vouches for the certificate.
    start(logins);
    run(protocol::send_email, mailTo(with_tls.address()));
    EXPECT_FALSE(wait(3).success);
    EXPECT_THAT(wait(3).words, HasSubstr("certificate"));
    EXPECT_FALSE(std::filesystem::exists(files / "2.envelope")) << "only the first was taken";
    EXPECT_FALSE(log.holds("secret"));
}

TEST_F(Live, NoTextAddsARecipientAHeaderOrACommand) {
    SilentServer const silent;
    start();
    std::size_t runs = 0;
    for (std::string const text :
         {"a@x.org, b@x.org", "a@x.org>\r\nRCPT TO:<b@x.org", "<a@x.org> <b@x.org>", "a@x.org b@x.org",
          "a@x.org\nRCPT", "b@x.org <a@x.org>", "A, b <a@x.org>", "\"a\"@x.org", "a;b@x.org", "<>"}) {
        for (std::size_t const place : {2U, 3U, 4U}) {
            Values settings = mailTo(silent.address());
            settings[place] = place == 4 ? Value(text) : Value(Texts{text});
            run(protocol::send_email, settings);
            ASSERT_TRUE(results[runs].has_value()) << text;
            EXPECT_THAT(results[runs++]->words, HasSubstr("is no mail address like")) << text;
        }
    }
    for (std::string const server : {"", "a b", "a/b", "a:0", "a:65536", "a:x", "a:", "u@a", "a\r\nb", "-a",
                                     "[::1", "a#b", "a?b", "a%0db", "..", "a:1:2"}) {
        run(protocol::send_email, mailTo(server));
        run(protocol::ftp_upload, uploadTo(server));
        ASSERT_TRUE(results[runs].has_value() && results[runs + 1].has_value()) << server;
        EXPECT_THAT(results[runs++]->words, HasSubstr(" is no name or address")) << server;
        EXPECT_FALSE(results[runs++]->success) << server;
    }
    for (std::size_t const place : {2U, 3U, 4U, 5U}) {
        Values settings = uploadTo(silent.address());
        settings[place] = std::string("a\r\nDELE b");
        run(protocol::ftp_upload, settings);
        ASSERT_TRUE(results[runs].has_value()) << place;
        EXPECT_THAT(results[runs++]->words, HasSubstr("has a control character")) << place;
    }
}

struct Transfer {
    char const *name;
    char const *server;
    protocol::ActionType type;
    Values (*settings)(std::string const &server);
};

class LiveTransfer : public Live, public testing::WithParamInterface<Transfer> {};

TEST_P(LiveTransfer, ThatMemoryFailsIsToldOfAndTheNextArrives) {
    if (!live_blocks::canFail()) {
        GTEST_SKIP() << "the sanitizer has an allocator of its own";
    }
    PythonServer const server({GetParam().server, files.path()});
    protocol::ActionType const type = GetParam().type;
    Values const settings = GetParam().settings(server.address());
    // Where memory fails in the middle of a mail, libcurl takes leave and waits for an answer that does not come.
    start({}, "", seconds(8));
    std::size_t failures = 0;
    bool failed = true;
    for (std::size_t nth = 1; failed; ++nth) {
        std::optional<RunResult> told;
        Job const job{7, &action_kinds[type], settings, ""};
        std::function<void(RunResult)> const done = [&told](RunResult result) { told = std::move(result); };
        {
            live_blocks::Recording const recording(live_blocks::Threads::started);
            live_blocks::FailingAllocations failing(nth, 1);
            runner->run(job, done);
            auto const end = std::chrono::steady_clock::now() + seconds(60);
            while (!told && std::chrono::steady_clock::now() < end) {
                try {
                    runner->finish();
                } catch (std::bad_alloc const &) {
                    // As the service does, which tries again.
                }
                std::this_thread::sleep_for(milliseconds(1));
            }
            failed = failing.failed() != 0;
        }
        ASSERT_TRUE(told.has_value()) << "allocation " << nth << ": nobody is told what became of it";
        ASSERT_TRUE(failed || told->success) << "allocation " << nth << ": " << told->words;
        failures += told->success ? 0U : 1U;
        run(type, settings);
        RunResult const next = wait(results.size() - 1);
        ASSERT_TRUE(next.success) << "after allocation " << nth << ": " << next.words;
    }
    EXPECT_GT(failures, 10U);
}

INSTANTIATE_TEST_SUITE_P(, LiveTransfer,
                         testing::Values(Transfer{"upload", "ftp", protocol::ftp_upload,
                                                  [](std::string const &server) { return uploadTo(server); }},
                                         Transfer{"mail", "smtp", protocol::send_email,
                                                  [](std::string const &server) {
                                                      return mailTo(server, /*picture*/ true);
                                                  }}),
                         [](auto const &transfer) { return transfer.param.name; });

TEST(Servers, HaveANameOrAnAddressAndMayHaveAPort) {
    EXPECT_EQ(readServer("Mail.Example.org").host, "mail.example.org");
    EXPECT_EQ(readServer("Mail.Example.org:2525").host, "mail.example.org");
    EXPECT_EQ(readServer("10.0.0.1:25").address, "10.0.0.1:25");
    EXPECT_EQ(readServer("[fe80::1]:25").host, "[fe80::1]");
    EXPECT_EQ(readServer("[::1]").host, "[::1]");
}

TEST(LoginFiles, HaveALineAServer) {
    TemporaryFolder const folder;
    std::string const path = folder / "logins";
    auto const refusal = [&path](std::string const &text) -> std::string {
        simulator::tests::writeFile(path, text);
        std::filesystem::permissions(
            path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
        try {
            (void)readLogins(path);
        } catch (std::runtime_error const &error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(refusal("# mine\n\nmachine A.org login anna password s\n"), "");
    EXPECT_EQ(readLogins(path).at("a.org").password, "s");
    EXPECT_THAT(refusal("\nmachine a.org login anna\n"), HasSubstr(", line 2: it must be like machine "));
    EXPECT_THAT(refusal("machine a.org login anna password s t\n"), HasSubstr(", line 1: "));
    EXPECT_THAT(refusal("machine a/b login anna password s\n"), HasSubstr("\"a/b\" is no name"));
    EXPECT_EQ(refusal(""), "");
    std::filesystem::permissions(path, std::filesystem::perms::group_read,
                                 std::filesystem::perm_options::add);
    EXPECT_THROW(readLogins(path), std::runtime_error) << "others can read it";
    EXPECT_THROW(readLogins(folder / "none"), std::runtime_error);
}

}  // namespace simulator::runners::tests
