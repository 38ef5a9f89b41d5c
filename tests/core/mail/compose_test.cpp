// SPDX-License-Identifier: GPL-3.0-or-later
// Image references, exchange-file names, envelope recipients and how a connection is
// secured: the rules that need no server.
#include <gtest/gtest.h>

#include "mail/mimecompose.h"
#include "mail/mimemessage.h"
#include "mail/smtpclient.h"
#include "support/testsupport.h"

namespace dorvane::mail {
namespace {

using Paths = std::vector<std::string>;

TEST(ScanImageReferences, LocalImagesBecomeNumberedPartsAndTheRestStays) {
    struct Case {
        const char* name;
        std::string html, rewritten;
        Paths paths, ids;
    };
    const std::string web = R"(<img src="images/logo.gif"><img src="http://example.com/logo.jpg">)"
                            R"(<img src="HTTP://EXAMPLE.COM/B.GIF"><img src="C:/pics/photo.bmp">)";
    const Case cases[] = {
        {"a local image used twice becomes one part",
         R"(<img src="C:/logo.gif"><p>Thanks</p><img src="C:/logo.gif" alt="x">)",
         R"(<img src="cid:1234"><p>Thanks</p><img src="cid:1234" alt="x">)",
         {"C:\\logo.gif"},
         {"1234"}},
        {"relative paths, web addresses and bitmaps stay as they are", web, web, {}, {}},
        // The relative image takes 1234 without being embedded; "src=" comes before
        // "background=", whatever the order in the text.
        {"content ids count every occurrence across the keywords",
         R"(<body background="C:/bg.JPEG"><img src="images/a.gif">)"
         R"(<img src="C:/Pics/b.jpg" width="10"><img src="C:/c.png"></body>)",
         R"(<body background="cid:1237"><img src="images/a.gif">)"
         R"(<img src="cid:1235" width="10"><img src="cid:1236"></body>)",
         {"C:\\Pics\\b.jpg", "C:\\c.png", "C:\\bg.JPEG"},
         {"1235", "1236", "1237"}},
        // A value that already holds "cid:" is passed over, and so is a tag left open at the end.
        {"passed-over occurrences still take their number",
         R"(<img src="cid:logo"><img src="file:///srv/b.gif"><img src="C:/a.gif")",
         R"(<img src="cid:logo"><img src="cid:1235"><img src="C:/a.gif")",
         {"file:\\\\\\srv\\b.gif"},
         {"1235"}},
    };
    for (const Case& c : cases) {
        Paths paths, ids;
        EXPECT_EQ(scanImageReferences(c.html, paths, ids), c.rewritten) << c.name;
        EXPECT_EQ(paths, c.paths) << c.name;
        EXPECT_EQ(ids, c.ids) << c.name;
    }
}

TEST(ImageFiles, ListedPathsAreReadFromThisSystemsPaths) {
    EXPECT_EQ(imageFilePath("file:\\\\\\srv\\dorvane\\logo%20big.gif"),
              "/srv/dorvane/logo big.gif");
    EXPECT_EQ(imageFilePath("file:\\\\localhost\\srv\\a%2Bb.png"), "/srv/a+b.png");
    EXPECT_EQ(imageFilePath("C:\\pics\\a.gif"), "C:/pics/a.gif");

    EXPECT_EQ(imageContentType("C:\\A.GIF"), "image/gif");
    EXPECT_EQ(imageContentType("C:\\a.jpeg"), "image/jpg");
    EXPECT_EQ(imageContentType("C:\\a.jpg"), "image/jpg");
    EXPECT_EQ(imageContentType("C:\\a.png"), "");
}

// Python's email package reads the composed message: the HTML document is the body, and the
// subject reads letter for letter, its closing blanks included.
TEST(DocumentMail, ReadersTakeTheDocumentAsTheBodyAndTheSubjectAsItIs) {
    test::TempDir dir;
    const std::string reader =
        (test::dataDir().parent_path() / "support" / "mail_reader.py").string();
    for (const std::string& subject : std::vector<std::string>{
             "Invoice: #1041  Date: 2026-11-17  ", "Rechnung f\xC3\xBCr M\xC3\xBCller  ",
             "Your Statement", std::string(90, 'x') + " end  "}) {
        DocumentMail mail;
        mail.sender = "office@example.com";
        mail.recipient = "a@example.test";
        mail.subject = subject;
        mail.html = "<p>Thanks</p>";
        MimeMessage message;
        composeDocumentMail(mail, message);
        ASSERT_EQ(message.save(dir / "themail.txt"), 0);
        std::string out;
        EXPECT_EQ(test::runCommand("/usr/bin/python3 '" + reader + "' '" +
                                       (dir / "themail.txt").string() + "' --text Thanks" +
                                       " --subject '" + subject + "'",
                                   &out),
                  0)
            << subject << "\n"
            << out << message.toString();
    }
}

TEST(ExchangeFileName, BlanksBecomeDashesAndColonsAndHashesGo) {
    EXPECT_EQ(attachmentFileName("Invoice: #1041  Date: 2002-05-01  "),
              "Invoice-1041--Date-2002-05-01--.dvx");
    EXPECT_EQ(attachmentFileName("Your Statement"), "Your-Statement.dvx");
    EXPECT_EQ(attachmentFileName("PurchaseOrder: #12/B  Date: 2002-05-01  "),
              "PurchaseOrder-12-B--Date-2002-05-01--.dvx");
}

TEST(EnvelopeRecipients, BlindCopiesFollowTheRecipient) {
    EXPECT_EQ(envelopeRecipients("a@example.com", ""), "a@example.com");
    EXPECT_EQ(envelopeRecipients("a@example.com", "b@example.org;c@example.net"),
              "a@example.com, b@example.org,c@example.net");
    EXPECT_EQ(envelopeRecipients("", "b@example.org;c@example.net"), "b@example.org,c@example.net");
    EXPECT_EQ(envelopeRecipients("", ""), "");
}

TEST(ConnectionPlan, LoginDataTravelsEncryptedUnlessTheServerIsThisMachine) {
    ConnectionPlan plain = planConnection("smtp.example.com", "25", "", true);
    EXPECT_TRUE(plain.url.starts_with("smtp://smtp.example.com:25/")) << plain.url;
    EXPECT_EQ(plain.tls, TlsMode::Opportunistic);

    ConnectionPlan login = planConnection("smtp.example.com", "587", "me", true);
    EXPECT_EQ(login.tls, TlsMode::Required);
    EXPECT_TRUE(login.refusal.empty());

    ConnectionPlan implicit = planConnection("smtp.example.com", " 465 ", "me", true);
    EXPECT_TRUE(implicit.url.starts_with("smtps://smtp.example.com:465/")) << implicit.url;
    EXPECT_EQ(implicit.tls, TlsMode::Implicit);

    EXPECT_EQ(planConnection("localhost", "2525", "me", true).tls, TlsMode::Opportunistic);
    EXPECT_TRUE(planConnection("::1", "25", "me", true).url.starts_with("smtp://[::1]:25/"));
    EXPECT_TRUE(planConnection("smtp.example.com", "", "", true)
                    .url.starts_with("smtp://smtp.example.com/"));

    // Without TLS on this system a login to another machine is refused before any
    // connection; mail without login still goes.
    EXPECT_FALSE(planConnection("smtp.example.com", "25", "me", false).refusal.empty());
    EXPECT_TRUE(planConnection("smtp.example.com", "25", "", false).refusal.empty());
    EXPECT_TRUE(planConnection("127.0.0.1", "25", "me", false).refusal.empty());
}

// Loopback is decided on the name alone; a login to any other machine needs encryption.
TEST(ConnectionPlan, LoopbackIsDecidedOnTheNameAlone) {
    for (const char* host : {"localhost", "LOCALHOST", "mail.localhost", "127.0.0.1", "127.8.9.10",
                             "127.1.2.3", "::1", "[::1]", "::ffff:127.0.0.1"}) {
        EXPECT_TRUE(isLoopbackHost(host)) << host;
        EXPECT_EQ(planConnection(host, "587", "me", true).tls, TlsMode::Opportunistic) << host;
    }
    EXPECT_FALSE(isLoopbackHost(""));
    for (const char* host :
         {"localhost.example.com", "mylocalhost", "10.0.0.1", "smtp.example.com", "::2",
          "128.0.0.1", "192.0.2.25", "2001:db8::25", "[2001:db8::25]", "::ffff:10.0.0.1"}) {
        EXPECT_FALSE(isLoopbackHost(host)) << host;
        EXPECT_EQ(planConnection(host, "587", "me", true).tls, TlsMode::Required) << host;
        EXPECT_FALSE(planConnection(host, "25", "me", false).refusal.empty()) << host;
        EXPECT_EQ(planConnection(host, "25", "", true).tls, TlsMode::Opportunistic) << host;
    }
}

}  // namespace
}  // namespace dorvane::mail
