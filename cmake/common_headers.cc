// Nothing: the target of the common headers has to have a source.
