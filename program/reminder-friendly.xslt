<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the friendly reminder (stage 1), one message per customer listing the invoices that reached
  this stage. Edit the words here; the layout is reminder-parts.xslt's. The opening words of
  Reminders FriendlyText in the settings, when set, replace $opening.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="reminder-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:variable name="title">PAYMENT REMINDER</xsl:variable>
  <xsl:variable name="opening">This is a friendly reminder that the invoices below are past their due date. Perhaps they have slipped through; we would be glad if you could arrange payment soon. If you have paid in the meantime, please disregard this message.</xsl:variable>
  <xsl:variable name="closing">Thank you for your business.</xsl:variable>

</xsl:stylesheet>
