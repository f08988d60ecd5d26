#include "oracle/address_generator.h"

#include <algorithm>
#include <array>

namespace callmonitor::oracle {
namespace {

const std::vector<std::string_view> oddSchemes{"HTTPS", "Https", "hTTps",  "http",  "HTTP", "ftp",
                                               "about", "blob",  "1https", "ht+tp", ""};

const std::vector<std::string_view> foreignHosts{"{meet|zoom|teams}.example.{org|com}",
                                                 "meet.google.com.example.org",
                                                 "{eu|www}.meet.google.com",
                                                 "{eu|www}.teams.{microsoft|live}.com",
                                                 "{evil|my-|}zoom.us{.example.org|.}",
                                                 "evilzoom.{us|com}",
                                                 ".zoom.us",
                                                 "zoom.{de|us.com}",
                                                 "teams.microsoft.{us|co}",
                                                 "teams.live.com.",
                                                 "meet.google%2ecom",
                                                 "meet%2Egoogle.com",
                                                 "zoom%2eus",
                                                 "a%2ezoom.us",
                                                 "",
                                                 "localhost",
                                                 "127.0.0.1",
                                                 "[::1]",
                                                 "[v1.zoom.us]",
                                                 "[1:2:3:4:5:6:7:8]",
                                                 "[::ffff:1.2.3.4]",
                                                 "[::g]",
                                                 "[zoom.us]",
                                                 "meet.google.co",
                                                 "mail.google.com",
                                                 "meet_google_com",
                                                 "meet.google.com,zoom.us",
                                                 "zo om.us",
                                                 "mëet.google.com",
                                                 "x.zoom.us@meet.google.com"};

std::string repeated(Draw& draw, std::string_view characters, std::size_t count) {
  std::string text;
  while (text.size() < count) text += draw.from(characters);
  return text;
}

std::string letters(Draw& draw, std::size_t count) {
  return repeated(draw, draw.oneIn(4) ? "abcXYZ" : "abcxyz", count);
}

// The number itself, or seldom one more or less.
std::size_t near(Draw& draw, std::size_t count) {
  if (!draw.oneIn(16)) return count;
  return draw.oneIn(2) ? count + 1 : count - 1;
}

std::string meetPath(Draw& draw) {
  return draw.expanded("{|||||||meet/|meet/|meet/|meet/meet/|other/|Meet/|/}") +
         letters(draw, near(draw, 3)) + draw.expanded("{-|-|-|-|-|-|-|-|-|-|-|-|-|-|_|}") +
         letters(draw, near(draw, 4)) + "-" + letters(draw, near(draw, 3));
}

std::string zoomPath(Draw& draw) {
  const std::size_t count = draw.oneIn(3) ? 4 + draw.below(14) : 9 + draw.below(3);
  return draw.expanded("{j/|j/|j/|wc/|wc/|wc/join/|wc/join/|J/|s/|join/|wc/join/j/|w}") +
         repeated(draw, "0123456789", count) + (draw.oneIn(16) ? "x" : "");
}

std::string teamsPath(Draw& draw) {
  const std::string id = draw.expanded("{19%3ameeting_|19:meeting_|19%3AMeeting_|a%20|a+|É|}") +
                         letters(draw, 1 + draw.below(6)) + draw.expanded("{%40|@|}thread.v2");
  switch (draw.below(4)) {
    case 0:
      return draw.expanded("{l/meetup-join/|l/meetup-join/|l/meetup-join/|L/meetup-join/}") +
             (draw.oneIn(12) ? "" : id) + "/0";
    case 1: {  // about as long as an id may be
      const std::string_view piece = draw.oneIn(2)   ? "a"
                                     : draw.oneIn(2) ? "%C3%A9"
                                                     : "%F0%9F%98%80";
      const std::size_t units = piece.size() == 12 ? 2 : 1;
      std::string longest = draw.oneIn(2) ? "b" : "";
      if (draw.oneIn(8)) {
        for (std::size_t i = 0; i < 510 / units + draw.below(5); ++i) longest += piece;
      }
      return "l/meetup-join/" + longest + std::string(piece);
    }
    default:
      return draw.expanded("{meet/|meet/|v2/meet/|v2/meet/|v2/|x/meet/|meet//}") +
             letters(draw, draw.below(12)) + draw.expanded("{||_ID|-1|2123|.b|%2E}");
  }
}

std::string landingPath(Draw& draw) {
  return draw.expanded(
      "{|home|landing|meet/landing|home/|Home|meet/home|new|meet|landing%2F|l%61nding}");
}

// One letter or slash of a path written as an escape, which changes nothing.
void escapeSomething(Draw& draw, std::string& path) {
  if (path.empty()) return;
  const std::size_t place = draw.below(path.size());
  const auto byte = static_cast<unsigned char>(path[place]);
  const bool withinEscape =
      path.substr(place < 2 ? 0 : place - 2, 3).find('%') != std::string::npos;
  if (withinEscape) return;
  const std::string_view hex = draw.oneIn(2) ? "0123456789abcdef" : "0123456789ABCDEF";
  path.replace(place, 1, std::string("%") + hex[byte / 16] + hex[byte % 16]);
}

// What may stand behind a meeting's path, escapes that break it among them.
std::string behindPath(Draw& draw) {
  return draw.expanded(
      "{||||||||||/|/|/x/y|/"
      "start|%2F|%2fx|x|.|%20|%00|%0A|%0D%0A|%0D|%0B|%0C|%C2%85|%E2%80%A8|%0A%0A|"
      "%0A/|/%FF|%FF|%ED%A0%80|%C0%AF|/%E2%80|/%F4%90%80%80|%|%4|%zz|[|\\|^}");
}

std::string base64(std::string_view bytes, std::string_view alphabet) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned long group = 0;
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    for (std::size_t k = 0; k < 3; ++k) {
      group = group * 256 + (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (std::size_t k = 0; k < 4; ++k) {
      text += k <= count ? alphabet[(group >> (18 - 6 * k)) & 63U] : '=';
    }
  }
  return text;
}

std::string meetingAddress(Draw& draw);

// A JSON object that names an address, as the launch page's script writes it.
std::string plainJson(Draw& draw, const std::string& inner) {
  return draw.expanded("{|| |\n}") + "{" +
         draw.expanded("{||| |\"a\":1,|\"a\":[1,\"x\",null,-0.5e3],}") + "\"meetingUrl\"" +
         draw.expanded("{:|: }") + "\"" + inner + "\"" +
         draw.from(std::array{"}", "}", "}", ",\"b\":\"é😀\"}", ",\"ÿ\":{\"meetingUrl\":1}}",
                              ",\"c\":{}}"});
}

// The same with something that may make it none.
std::string oddJson(Draw& draw, const std::string& inner) {
  const std::string value =
      draw.oneIn(2) ? draw.expanded("{null|7|true|[]|{|\"\\q\"|\"\\ud800\"|\"\\ud83d\\ude00\"}")
                    : "\"" + inner + "\"";
  std::string json = draw.expanded("{||||\"|x}") + "{" + draw.expanded("{||||,|\"a\":01,|'a':1,}") +
                     "\"" + draw.expanded("{meetingUrl|meetingUrl|meetingUrl|meetingURL|x}") +
                     "\"" + draw.expanded("{:|:|:|=}") + value +
                     draw.expanded("{|||,|,\"c\":01|,\"ÿ\":nil}") + "}";
  if (draw.oneIn(6)) json = "[" + json + "]";
  if (draw.oneIn(6)) json.resize(draw.below(json.size()));
  if (draw.oneIn(6)) json += draw.expanded("{ |x|\n|}");
  if (draw.oneIn(6))
    json.insert(draw.below(json.size() + 1), 1, draw.from(std::string_view("\0\t\xff\\\"", 5)));
  if (draw.oneIn(6) && json.size() < 6000)
    json += std::string(6090 + draw.below(60) - json.size(), ' ');
  return json;
}

std::string launchPayload(Draw& draw) {
  constexpr std::string_view common =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  std::string inner = draw.oneIn(4)
                          ? draw.expanded("{https|http|}://") + meetingAddress(draw)
                          : "https://teams.live.com/meet/" + repeated(draw, "0123456789", 9);
  std::string quoted;
  for (const char c : inner) {
    if (c == '"' || c == '\\') quoted += '\\';
    if (c == '/' && draw.oneIn(8)) quoted += '\\';
    quoted += c;
  }
  if (draw.oneIn(8)) quoted = "\\u0068" + quoted.substr(1);
  const std::string json = draw.oneIn(3) ? oddJson(draw, quoted) : plainJson(draw, quoted);
  std::string text = base64(json, std::string(common) + draw.expanded("{-_|+/}"));
  if (draw.oneIn(2)) text.resize(std::min(text.size(), text.find('=')));
  if (draw.oneIn(12)) text += draw.expanded("{=|==|===|A|A=|AA|!|%20|%0A|%FF}");
  return text;
}

std::string queryOf(Draw& draw, bool launch) {
  if (!launch)
    return draw.expanded("{||||?|?authuser=0|?pwd=secret|?x=%FF|?coords=e30|?a b|?{|?x=/y?z}");
  return draw.expanded("?{||||||anon=true&|anon=true&|coords&|coords=&|&|=x&|xcoords=1&}") +
         draw.expanded("{coords|coords|coords|coords|coords|c%6Fords|Coords}=") +
         launchPayload(draw) + draw.expanded("{|||&coords=invalid|&x}");
}

std::string fragmentOf(Draw& draw, bool route) {
  if (!route) return draw.expanded("{||||||#|#x|#/meet/123|#a#b|#%FF}");
  return draw.expanded("#{/meet/|/meet/|/meet/|/meet/|/v2/meet/|meet/|%2Fmeet%2f|/Meet/}") +
         letters(draw, draw.below(8)) + draw.expanded("{|||?p=AbC|%3Fp|/x|?|%|%FF|.x|#}");
}

// An address near one that names a meeting, before anything else is done to it.
std::string meetingAddress(Draw& draw) {
  const std::size_t kind = draw.below(14);
  const bool launch = kind < 3;
  const bool route = kind == 3;
  std::string host = draw.expanded("teams.{microsoft.com|live.com|cloud.microsoft}");
  std::string path = teamsPath(draw);
  if (launch) path = draw.expanded("light-meetings/{launch|launch|launch|launch|launch/|Launch}");
  if (route) {
    host = draw.expanded("teams.{live.com|live.com|live.com|microsoft.com}");
    path = draw.expanded("{v2|v2/|v2/|v2/x|v3/}");
  }
  if (kind >= 6) {
    host = "meet.google.com";
    path = draw.oneIn(4) ? landingPath(draw) : meetPath(draw);
  }
  if (kind >= 10) {
    host = draw.expanded("{|us02web.|app.|a.b.}zoom.{us|com}");
    path = zoomPath(draw);
  }
  if (draw.oneIn(32)) path = meetPath(draw);
  if (draw.oneIn(4)) path += behindPath(draw);
  if (draw.oneIn(4)) escapeSomething(draw, path);
  if (draw.oneIn(12)) host = draw.expanded(draw.from(foreignHosts));
  if (draw.oneIn(6)) {
    for (char& c : host) {
      if (c >= 'a' && c <= 'z' && draw.oneIn(2)) c = static_cast<char>(c - 32);
    }
  }
  const std::string user =
      draw.oneIn(16) ? draw.expanded("{@|:@|user@|user:secret@|meet.google.com@|a@b@}") : "";
  const std::string port =
      draw.oneIn(8)
          ? draw.expanded(":{443|443|443||0443|00443|444|80|4430|65979|4294967739|44 3|x|443:443}")
          : "";
  const std::string slash = draw.oneIn(32) ? draw.expanded("{|//|?/|#/}") : "/";
  return user + host + port + slash + path + queryOf(draw, launch) + fragmentOf(draw, route);
}

}  // namespace

std::string anyAddress(Draw& draw) {
  if (draw.oneIn(24)) {
    return draw.expanded(
        "{|about:blank|chrome://newtab/|https:|https://|https:///x|http://|http:x|://x|:x|1:x|a/"
        "b:c|"
        "//meet.google.com/abc-defg-hij|/abc-defg-hij|mailto:a@b.c|data:text/html,x|file:///x|x "
        "y|%}");
  }
  std::string address = std::string(draw.oneIn(5) ? draw.from(oddSchemes) : "https") +
                        (draw.oneIn(32) ? draw.expanded("{:|:/|//|:///|}") : "://") +
                        meetingAddress(draw);
  if (draw.oneIn(1000)) address += "?" + std::string(16300 + draw.below(100), 'x');
  if (draw.oneIn(1000) && address.find_first_of("?#") == std::string::npos) {
    address += "?";
    address.resize(16383 + draw.below(4), 'x');
  }
  if (draw.oneIn(24)) {  // one character wrong
    address.insert(draw.below(address.size() + 1), 1,
                   draw.from(std::string_view("ax1 /:@?#%[]{}\"<\\^|\x01\xC3.-")));
  }
  return address;
}

}  // namespace callmonitor::oracle
