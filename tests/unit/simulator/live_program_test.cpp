// SPDX-License-Identifier: Apache-2.0
// The program with --live, and real servers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "program.h"
#include "servers.h"

namespace simulator::tests {

using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

TEST_F(ProgramTest, SendsMailsAndUploadsWhileAServerHangs) {
    TemporaryFolder const mails;
    TemporaryFolder const uploads;
    PythonServer const smtp({"smtp", mails.path()});
    PythonServer const ftp({"ftp", uploads.path()});
    SilentServer const silent;
    Program program({"--live", "mail,ftp"});
    expectReady(program);
    Client client;
    client.subscribe();
    auto const upload = [](char const *name, std::string const &server) {
        return std::string(
                   R"({"command":"Create_ftp_action","username":"anna","password":"secret","path":"",)") +
               R"("filename":"door.jpg","action_name":")" + name + R"(","server_name":")" + server + "\"}";
    };
    client.call(upload("hangs", silent.address()));
    client.call(
        R"({"command":"Create_email_action","action_name":"mail","to_addresses":["to@x.org"],"cc_addresses":[],)"
        R"("from_address":"me@x.org","subject":"door","body":"open","attach_jpeg":true,"include_event":true,)"
        R"("smtp_server":")" +
        smtp.address() + "\"}");
    client.call(upload("upload", ftp.address()));
    client.call(R"({"command":"Create_wiper_action","action_name":"wiper"})");
    client.call(
        R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"","topic_filter_dialect":"",)"
        R"("content_filter":"","namespace_keys":[],"namespace_uris":[]})");
    for (char const *const action_id : {"1", "2", "3", "4"}) {
        client.call(std::string(R"({"command":"Create_association","trigger_id":1,"action_id":)") +
                    action_id + "}");
    }
    EXPECT_THAT(
        client.call(
            R"({"command":"Onvif_event","topic":"door","message":"<m/>","namespace_keys":[],"namespace_uris":[]})"),
        HasSubstr(R"("status":0)"));
    EXPECT_THAT(client.events(3),
                UnorderedElementsAre(
                    R"({"event":"Action_completed","action_id":2,"action_name":"mail","success":true})",
                    R"({"event":"Action_completed","action_id":3,"action_name":"upload","success":true})",
                    R"({"event":"Action_completed","action_id":4,"action_name":"wiper","success":true})"));
    std::string const picture = readFile(uploads / "door.jpg");
    EXPECT_THAT(picture, StartsWith("\xff\xd8\xff"));
    EXPECT_THAT(readFile(mails / "1.picture"), StartsWith("\xff\xd8\xff"));
    EXPECT_THAT(readFile(mails / "1.eml"), HasSubstr("Topic: door\r\nMessage: <m/>\r\n"));
    EXPECT_TRUE(std::filesystem::is_empty(state / "action-engine-simulator/outbox")) << "nothing is recorded";
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
    std::string const log = program.errors();
    EXPECT_THAT(log, HasSubstr("1 mails and uploads were given up at the end"));
    EXPECT_THAT(log, testing::Not(HasSubstr("secret")));
}

}  // namespace simulator::tests
