<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the final reminder (stage 3), one message per customer listing the invoices that reached
  this stage. Edit the words here; the layout is reminder-parts.xslt's. The opening words of
  Reminders FinalText in the settings, when set, replace $opening.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="reminder-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:variable name="title">FINAL NOTICE</xsl:variable>
  <xsl:variable name="opening">The invoices below are long past their due date and still unpaid. Please pay the total due now. If we do not receive payment, we will have to take further steps to collect it.</xsl:variable>
  <xsl:variable name="closing">If you have paid in the meantime, please disregard this notice.</xsl:variable>

</xsl:stylesheet>
