#include "request.h"

int main() { return orvane::test::answers(*orvane::IPocketAgent::getInstance()) ? 0 : 1; }
