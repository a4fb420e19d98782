// Well-formed documents, read by us and by Expat: the same names, attributes, texts and structure.

#include <gtest/gtest.h>

#include <random>

#include "tests/support/expat_tree.h"
#include "tests/xml/document_maker.h"
#include "tests/xml/outline.h"
#include "tests/xml/sample_messages.h"
#include "xml/xml_node.h"

namespace velmora {
namespace {

void ExpectSameTree(const ByteString& document) {
    const ExpatTree expat(document);
    ASSERT_TRUE(expat.wellFormed) << document;
    ASSERT_EQ(outline(XmlNode(document, true)), outline(expat.root)) << document;
}

TEST(XmlAgainstExpat, ReadsMessagesAlike) {
    for (const char* message : kSampleMessages) ExpectSameTree(message);
}

TEST(XmlAgainstExpat, ReadsWellFormedDocumentsAlike) {
    DocumentMaker maker([random = std::mt19937(1)]() mutable { return random(); });  // the same documents every time
    for (int round = 0; round < 20000 && !HasFatalFailure(); ++round) ExpectSameTree(maker.Document());
}

}  // namespace
}  // namespace velmora
