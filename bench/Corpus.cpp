// Text in many languages, as long as wanted: sentences of the files in corpora/, drawn by
// a fixed seed.

#include "Corpus.h"

#include <fstream>
#include <random>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvel::bench {

namespace {

constexpr Language languages[] = {
    {"arabic", "arabic", " ", Style::written},
    {"chinese_simplified", "chinese_simplified", "", Style::written},
    {"chinese_traditional", "chinese_traditional", "", Style::written},
    {"emoji", "emoji", "\r\n", Style::written},
    {"english", "english", " ", Style::written},
    {"english_direct", "english", " ", Style::direct},
    {"french", "french", " ", Style::written},
    {"french_typed", "french", " ", Style::typed},
    {"french_direct", "french", " ", Style::direct},
    {"german", "german", " ", Style::written},
    {"japanese", "japanese", "", Style::written},
    {"japanese_direct", "japanese", "", Style::direct},
    {"korean", "korean", " ", Style::written},
    {"polish", "polish", " ", Style::written},
    {"russian", "russian", " ", Style::written},
    {"russian_typed", "russian", " ", Style::typed},
    {"thai", "thai", " ", Style::written},
};

struct Replacement {
  Style style;
  std::string_view sign;
  std::string_view instead;
};

constexpr Replacement replacements[] = {
    {Style::typed, "\u00ab ", "\""}, {Style::typed, " \u00bb", "\""},
    {Style::typed, "\u00ab", "\""},  {Style::typed, "\u00bb", "\""},
    {Style::typed, "\u00c0", "A"},   {Style::typed, "\u0153", "oe"},
    {Style::typed, "\u2014", "-"},   {Style::typed, "\u2019", "'"},
    {Style::typed, "\u2026", "..."}, {Style::typed, "\u20ac", "EUR"},
    {Style::typed, "\u2116", "No."}, {Style::direct, "!", "."},
    {Style::direct, "\"", "'"},      {Style::direct, "%", " percent"},
    {Style::direct, ";", ","},       {Style::direct, "@", " at "},
};

constexpr const char* words[] = {"USB",    "Linux",  "PDF",   "Wi-Fi",  "Windows", "GPS",
                                 "e-mail", "Python", "HTML5", "SQLite", "TV",      "Bluetooth",
                                 "Excel",  "CPU",    "JPEG",  "Ubuntu"};

// The library's distributions differ from one implementation to the next; the
// generator itself does not.
class Dice {
 public:
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(m_engine() % limit); }
  std::size_t between(std::size_t first, std::size_t last) {
    return first + below(last - first + 1);
  }

 private:
  std::mt19937_64 m_engine{20240229};
};

std::vector<std::string> readSentences(const Language& language) {
  const std::string path = std::string(QUORVEL_CORPORA) + "/" + language.file + ".txt";
  std::ifstream file(path);
  std::vector<std::string> sentences;
  for (std::string line; std::getline(file, line);) sentences.push_back(line);
  if (sentences.empty()) throw std::runtime_error("no sentences in " + path);
  return sentences;
}

std::string blankFilled(char blank, Dice& dice) {
  switch (blank) {
    case 'n':
      return std::to_string(dice.between(2, dice.below(3) == 0 ? 9999 : 99));
    case 'd':
      return std::to_string(dice.between(1, 9));
    case 'y':
      return std::to_string(dice.between(1871, 2024));
    case 'h':
      return std::to_string(dice.between(7, 22)) + ":" + std::to_string(dice.between(10, 59));
    case 'w':
      return words[dice.below(std::size(words))];
    default:
      throw std::runtime_error(std::string("no such blank: ") + blank);
  }
}

void appendSentence(const std::string& sentence, Dice& dice, std::string& text) {
  for (std::size_t i = 0; i < sentence.size(); ++i) {
    if (sentence[i] == '{') {
      text += blankFilled(sentence.at(i + 1), dice);
      i += 2;
    } else {
      text += sentence[i];
    }
  }
}

std::string writtenIn(Style style, std::string text) {
  for (const auto& [ofStyle, sign, instead] : replacements) {
    if (ofStyle != style) continue;
    for (std::size_t at = 0; (at = text.find(sign, at)) != std::string::npos;
         at += instead.size()) {
      text.replace(at, sign.size(), instead);
    }
  }
  return text;
}

void shuffle(std::vector<std::string>& sentences, Dice& dice) {
  for (std::size_t i = sentences.size(); i > 1; --i) {
    std::swap(sentences[i - 1], sentences[dice.below(i)]);
  }
}

}  // namespace

const Language& languageNamed(const std::string& name) {
  for (const Language& language : languages) {
    if (name == language.name) return language;
  }
  throw std::runtime_error("no such language: " + name);
}

std::string makeText(const Language& language, std::size_t numBytes) {
  Dice dice;
  std::vector<std::string> sentences = readSentences(language);
  std::string text;
  std::size_t next = sentences.size();
  do {
    for (std::size_t left = dice.between(3, 7); left > 0; --left) {
      if (next == sentences.size()) {
        shuffle(sentences, dice);
        next = 0;
      }
      appendSentence(sentences[next++], dice, text);
      text += left > 1 ? language.joint : "\r\n";
    }
  } while (text.size() < numBytes);
  return writtenIn(language.style, std::move(text));
}

}  // namespace quorvel::bench
