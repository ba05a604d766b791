#include "serialization/pmml/timestamp.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <tessel/data/convert.h>

namespace Tessel::PMML {

WString localTimestamp() {
    // Boost knows the thread-safe call of each platform.
    const boost::posix_time::ptime now = boost::posix_time::second_clock::local_time();
    const auto text = [](auto number) { return Convert::toString(static_cast<int>(number)); };
    const auto date = now.date().year_month_day();
    const auto time = now.time_of_day();
    return text(date.year) + L'-' + text(date.month) + L'-' + text(date.day) + L' ' + text(time.hours()) +
           L':' + text(time.minutes()) + L':' + text(time.seconds());
}

}  // namespace Tessel::PMML
