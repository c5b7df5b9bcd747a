#pragma once

class ZRDocument;

/// Told by a `ZRDocument` of its changes. Main thread.
class ZRDocumentObserver
{
public:
    virtual ~ZRDocumentObserver() = default;

    /// The content changed. All that changed together is told of once.
    virtual void documentDidChange(ZRDocument &document) = 0;
};
