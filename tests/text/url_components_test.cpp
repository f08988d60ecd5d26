// Addresses taken apart; whatever is not strictly an address is refused here, for every rule.
#include "text/url_components.h"

#include <gtest/gtest.h>

namespace callmonitor {
namespace {

struct ComponentsCase {
  std::string_view sentence;
  std::string_view raw;
  UrlComponents parts;
};

TEST(UrlComponents, TakesAnAddressApartAsWritten) {
  const ComponentsCase cases[] = {
      {"every part is there",
       "https://user:pw@host.example:443/a/b?q=1&r#frag/ment?x",
       {"https", "user:pw", "host.example", "443", "/a/b", "q=1&r", "frag/ment?x"}},
      {"absent parts are absent",
       "https://host.example/",
       {"https", {}, "host.example", {}, "/", {}, {}}},
      {"no path is an empty path",
       "https://host.example",
       {"https", {}, "host.example", {}, "", {}, {}}},
      {"a root without a host", "scheme:/", {"scheme", {}, {}, {}, "/", {}, {}}},
      {"an empty user part is there", "https://@h/", {"https", "", "h", {}, "/", {}, {}}},
      {"an empty user and password are there",
       "https://:@h/",
       {"https", ":", "h", {}, "/", {}, {}}},
      {"an empty port is absent", "https://h:/p", {"https", {}, "h", {}, "/p", {}, {}}},
      {"leading zeros of a port stay", "https://h:0443/", {"https", {}, "h", "0443", "/", {}, {}}},
      {"a port of many digits stays",
       "https://h:4294967739/",
       {"https", {}, "h", "4294967739", "/", {}, {}}},
      {"an empty query and fragment are there",
       "https://h/?#",
       {"https", {}, "h", {}, "/", "", ""}},
      {"nothing is lower-cased",
       "HTTPS://HOST/Path?Q#F",
       {"HTTPS", {}, "HOST", {}, "/Path", "Q", "F"}},
      {"nothing is decoded",
       "https://h%41/%2F%41?%41#%41",
       {"https", {}, "h%41", {}, "/%2F%41", "%41", "%41"}},
      {"doubled slashes stay", "https://h//a//b/", {"https", {}, "h", {}, "//a//b/", {}, {}}},
      {"dots in a path stay",
       "https://h/a/../b/./c",
       {"https", {}, "h", {}, "/a/../b/./c", {}, {}}},
      {"a query may follow the host", "https://h?q", {"https", {}, "h", {}, "", "q", {}}},
      {"a fragment may follow the host", "https://h#f", {"https", {}, "h", {}, "", {}, "f"}},
      {"an address without authority", "about:blank", {"about", {}, {}, {}, "blank", {}, {}}},
      {"a reference without scheme", "/a/b", {{}, {}, {}, {}, "/a/b", {}, {}}},
      {"nothing at all is a reference", "", {{}, {}, {}, {}, "", {}, {}}},
  };
  for (const ComponentsCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    const std::optional<UrlComponents> parts = urlComponents(row.raw);
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts->scheme, row.parts.scheme);
    EXPECT_EQ(parts->userInfo, row.parts.userInfo);
    EXPECT_EQ(parts->host, row.parts.host);
    EXPECT_EQ(parts->port, row.parts.port);
    EXPECT_EQ(parts->path, row.parts.path);
    EXPECT_EQ(parts->query, row.parts.query);
    EXPECT_EQ(parts->fragment, row.parts.fragment);
  }
}

TEST(UrlComponents, RefusesWhatIsNotStrictlyAnAddress) {
  const std::string_view cases[] = {
      "https://h/a b",
      " https://h/",
      "https://h/ ",
      "https://h/\n",
      "https://h/{",
      "https://h/}",
      "https://h/|",
      "https://h/^",
      "https://h/`",
      "https://h/\"",
      "https://h/<",
      "https://h/>",
      "https://h/\\",
      "https://h/[",
      "https://h/]",
      "https://h/?[",
      "https://h/?{",
      "https://h/#[",
      "https://h/#a#b",
      "https://h/%",
      "https://h/%4",
      "https://h/%zz",
      "https://h/?%zz",
      "https://h/#%zz",
      "https://h/é",
      "https://é/",
      "https://h\\@g/",
      "https://h:44x/",
      "https://h:-1/",
      "https://a@b@c/",
      "https://[::1/",
      "1https://h/",
      std::string_view("https://h/\0", 11),
      std::string_view("https://h/a\0b", 13),
  };
  for (const std::string_view raw : cases) {
    SCOPED_TRACE(testing::PrintToString(std::string(raw)));
    EXPECT_FALSE(urlComponents(raw));
  }
}

struct DecodingCase {
  std::string_view sentence;
  std::string_view text;
  std::optional<std::string> decoded;
};

TEST(UrlComponents, DecodesPercentEscapes) {
  const DecodingCase cases[] = {
      {"nothing", "", ""},
      {"plain text stays", "/a-b", "/a-b"},
      {"both cases of digits", "%3a%3A%40", "::@"},
      {"an encoded slash", "%2F", "/"},
      {"an encoded percent is not decoded twice", "%2541", "%41"},
      {"a plus stays a plus", "a+b", "a+b"},
      {"characters of several bytes", "%C3%A9%F0%9F%98%80", "é😀"},
      {"the zero character", "a%00b", std::string("a\0b", 3)},
      {"an escape at the very end", "a%41", "aA"},
      {"an escape without digits", "%", std::nullopt},
      {"an escape with one digit", "a%4", std::nullopt},
      {"an escape with a bad first digit", "%g0", std::nullopt},
      {"an escape with a bad second digit", "%0g", std::nullopt},
      {"an escape with a sign", "%+1", std::nullopt},
      {"a byte that is not UTF-8", "/a%FF", std::nullopt},
      {"a cut-off character", "%C3", std::nullopt},
      {"a character split between escape and text", "%C3(", std::nullopt},
      {"an overlong slash", "%C0%AF", std::nullopt},
      {"a surrogate", "%ED%A0%80", std::nullopt},
  };
  for (const DecodingCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    EXPECT_EQ(percentDecoded(row.text), row.decoded);
  }
}

struct QueryCase {
  std::string_view sentence;
  std::string_view query;
  std::vector<std::pair<std::string, std::optional<std::string>>> items;
};

TEST(UrlComponents, PartsAQueryIntoItsItems) {
  const QueryCase cases[] = {
      {"items stand in order", "a=1&b=2&a=3", {{"a", "1"}, {"b", "2"}, {"a", "3"}}},
      {"an item without an equals sign has no value", "a&b=", {{"a", {}}, {"b", ""}}},
      {"the first equals sign parts", "a=b=c==", {{"a", "b=c=="}}},
      {"a plus is a space", "a+b=c+d", {{"a b", "c d"}}},
      {"an encoded plus is a plus", "a=%2B", {{"a", "+"}}},
      {"an encoded space is a space", "a=%20", {{"a", " "}}},
      {"names are decoded too", "%63oords=x", {{"coords", "x"}}},
      {"an encoded ampersand parts nothing", "a=1%26b=2", {{"a", "1&b=2"}}},
      {"a value that does not decode is absent", "a=%FF&b=1", {{"a", {}}, {"b", "1"}}},
      {"a semicolon parts nothing", "a=1;b=2", {{"a", "1;b=2"}}},
  };
  for (const QueryCase& row : cases) {
    SCOPED_TRACE(row.sentence);
    std::vector<std::pair<std::string, std::optional<std::string>>> items;
    for (const QueryItem& item : queryItems(row.query)) items.emplace_back(item.name, item.value);
    EXPECT_EQ(items, row.items);
  }
}

}  // namespace
}  // namespace callmonitor
