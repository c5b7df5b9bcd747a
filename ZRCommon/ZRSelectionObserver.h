#pragma once

class ZRSelection;

/// Is told of the changes of a `ZRSelection`. Main thread.
class ZRSelectionObserver
{
public:
    virtual ~ZRSelectionObserver() = default;

    /// Something was selected or deselected, or might have been. All that changed together is told of once.
    virtual void selectionDidChange(ZRSelection &selection) = 0;
};
