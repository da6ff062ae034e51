class UndetectedError(ValueError):
    """No encoding was detected; naming one in the call decodes the text nevertheless."""

    __module__ = 'codetrans'
