// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/mail.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <string>

namespace simulator::runners::tests {

namespace {

using testing::HasSubstr;
using testing::Not;

struct Mail {
    Texts to = {"a@x", "b@x"};
    Texts cc = {"c@x"};
    std::string from = "from@x";
    std::string subject = "door";
    std::string body = "line one\nline two";
    bool picture = false;
    bool event = false;
    // Wednesday.
    std::time_t date = 1'700'000'000 + 21 * 3600 - 80'000 + 59'000;

    std::string compose(std::string const &jpeg = "") const {
        Job const job{
            7,
            &action_kinds[protocol::send_email],
            {std::string("name"), std::string("smtp.x"), to, cc, from, subject, body, picture, event},
            "Trigger 1 fired.\nTopic: t\nMessage: m\n"};
        return composeMail(job, jpeg, date);
    }
};

}  // namespace

TEST(Mail, HasHeadersAndBody) {
    EXPECT_EQ(Mail().compose(),
              "From: from@x\r\n"
              "To: a@x, b@x\r\n"
              "Cc: c@x\r\n"
              "Subject: door\r\n"
              "Date: Wed, 15 Nov 2023 13:23:20 +0000\r\n"
              "X-Smtp-Server: smtp.x\r\n"
              "MIME-Version: 1.0\r\n"
              "Content-Type: text/plain; charset=utf-8\r\n"
              "Content-Transfer-Encoding: 8bit\r\n"
              "\r\n"
              "line one\r\nline two\r\n");
}

TEST(Mail, HasDatesThat32BitsDoNotHold) {
    Mail mail;
    mail.date = 4'295'312'896;
    EXPECT_THAT(mail.compose(), HasSubstr("\r\nDate: Thu, 11 Feb 2106 06:28:16 +0000\r\n"));
}

TEST(Mail, TellsOfTheEventWhenItShould) {
    Mail mail;
    mail.event = true;
    EXPECT_THAT(mail.compose(),
                testing::EndsWith("line two\r\n\r\nTrigger 1 fired.\r\nTopic: t\r\nMessage: m\r\n\r\n"));
}

TEST(Mail, CarriesThePictureWhenItShould) {
    Mail mail;
    mail.picture = true;
    std::string const text = mail.compose("Many hands make light work.");
    EXPECT_THAT(text, HasSubstr("Content-Type: multipart/mixed; boundary=\"picture-follows\"\r\n"));
    EXPECT_THAT(text, HasSubstr("\r\n--picture-follows\r\nContent-Type: text/plain"));
    EXPECT_THAT(text, HasSubstr("\r\n\r\nTWFueSBoYW5kcyBtYWtlIGxpZ2h0IHdvcmsu\r\n--picture-follows--\r\n"));
    EXPECT_THAT(mail.compose("ab"), HasSubstr("\r\n\r\nYWI=\r\n"));
    EXPECT_THAT(mail.compose("a"), HasSubstr("\r\n\r\nYQ==\r\n"));
}

TEST(Mail, BreaksLongEncodedLines) {
    Mail mail;
    mail.picture = true;
    std::string const line(76, 'A');
    EXPECT_THAT(mail.compose(std::string(60, '\0')), HasSubstr("\r\n\r\n" + line + "\r\nAAAA\r\n"));
}

TEST(Mail, LetsNoSettingAddAHeader) {
    Mail mail;
    mail.subject = "door\r\nBcc: evil@x";
    mail.from = "from@x\nBcc: evil@x";
    mail.to = {"a@x\r\nBcc: evil@x"};
    EXPECT_THAT(mail.compose(), Not(HasSubstr("\nBcc:")));
}

TEST(Mail, LetsNoBodyEndItsPart) {
    Mail mail;
    mail.picture = true;
    mail.body = "--picture-follows--\n--picture-follows-0--";
    EXPECT_THAT(mail.compose(), HasSubstr("boundary=\"picture-follows-1\""));
}

TEST(Mail, HasNoLineThatServersRefuse) {
    Mail mail;
    mail.to = Texts(100, "somebody@a.example.org");
    mail.body = std::string(1000, 'x');
    std::string const text = mail.compose();
    EXPECT_THAT(text, HasSubstr("Content-Transfer-Encoding: base64\r\n"));
    std::size_t longest = 0;
    for (std::size_t begin = 0, end = 0; (end = text.find("\r\n", begin)) != std::string::npos;
         begin = end + 2) {
        longest = std::max(longest, end - begin);
    }
    EXPECT_LE(longest, 998U);
    EXPECT_THAT(text, HasSubstr(",\r\n somebody@a.example.org"));
}

TEST(Mail, HasNoLineEndsThatServersTakeForDifferentThings) {
    Mail mail;
    mail.body = "one\r.\rtwo\n.\nthree\r\n";
    EXPECT_THAT(mail.compose(), testing::EndsWith("\r\none\r\n.\r\ntwo\r\n.\r\nthree\r\n\r\n"));
}

TEST(Mail, NeedsARecipient) {
    Mail mail;
    mail.to.clear();
    EXPECT_THAT(mail.compose(), Not(HasSubstr("To:")));
    mail.cc.clear();
    EXPECT_THROW(mail.compose(), std::runtime_error);
}

}  // namespace simulator::runners::tests
