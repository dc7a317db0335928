#pragma once

#include <string>

#include "terminal/trading/book.h"

namespace orvane::terminal {

// Checks a new order against the book and works out what it closes.
class OrderCheck {
 public:
  // REQUIRES: the order's account and instrument stand in the book; both references outlive the check.
  OrderCheck(const Book& book, BookOrder& order);

  // Empty where the order may work, its `closeYesterday` and `closeToday` then being set; a market order gets the
  // opposite quote for its price. Otherwise what is wrong, naming the figure. UTF-8.
  std::string fault();

 private:
  std::string account();
  std::string market();
  std::string terms();
  std::string price();
  std::string volume();
  std::string closing();
  std::string funds();
  std::string creditLimit();
  void findClosable();
  bool wantsToClose() const;
  std::string allocate();
  BookOrder atFillPrice() const;

  const Book& book_;
  BookOrder& order_;
  const Account& account_;
  const Instrument& instrument_;
  int64_t freeYesterday_ = 0;  // closable parts of the opposite holding
  int64_t freeToday_ = 0;
  int64_t ownLeft_ = 0;  // of the holding, what was not bought with borrowed money
};

}  // namespace orvane::terminal
