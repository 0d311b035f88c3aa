#pragma once

#include <QString>

namespace bench {

// A symbolic link that leads to the receiver's line, for as long as the object lives.
class LinkName
{
public:
    LinkName() = default;
    LinkName(const LinkName &) = delete;
    LinkName &operator=(const LinkName &) = delete;
    ~LinkName(); // removes the link, unless it leads elsewhere by now

    // Makes the link; one that led to a pseudo-terminal before is replaced, anything else is
    // not. Nothing, or one line that names the path and the cure.
    QString make(const QString &path, const QString &destination);

private:
    QString link;
    QString target;
};

} // namespace bench
