<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the preview of an Authorize.Net receipt, before it is booked as a sales receipt.

  Receives the receipt document's root element, AuthorizeNet: one element per receipt line
  (named after the line's label without blanks and slashes, its text the line's value), the
  billing and shipping fields inside Billing and Shipping. Writes a whole HTML page: a strip
  with the payer, the amount, the date and the transaction, then every line of the receipt,
  section by section, as the receipt had them.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="AuthorizeNet">
    <xsl:variable name="company" select="normalize-space((.//Company)[1])"/>
    <xsl:variable name="person" select="normalize-space(concat(Billing/FirstName, ' ', Billing/LastName))"/>
    <html>
      <head><title>Authorize.Net receipt</title></head>
      <body style="margin:16px;background-color:#ffffff;">
        <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}margin-bottom:22px;">
          <tr>
            <td style="padding:10px 12px;background-color:{$shade};border-left:4px solid {$accent};">
              <div style="{$label-style}">Import preview</div>
              <div style="padding:4px 0 2px 0;font-size:15px;">
                <xsl:text>Authorize.Net receipt</xsl:text>
                <xsl:if test="normalize-space(TransactionID) != ''">
                  <xsl:text> </xsl:text><b><xsl:value-of select="TransactionID"/></b>
                </xsl:if>
                <xsl:if test="normalize-space(DateTime) != ''">
                  <xsl:value-of select="concat(' of ', normalize-space(DateTime))"/>
                </xsl:if>
                <xsl:text> from </xsl:text>
                <b>
                  <xsl:choose>
                    <xsl:when test="$company != ''"><xsl:value-of select="$company"/></xsl:when>
                    <xsl:when test="$person != ''"><xsl:value-of select="$person"/></xsl:when>
                    <xsl:otherwise>an unnamed payer</xsl:otherwise>
                  </xsl:choose>
                </b>
              </div>
              <div>
                <xsl:if test="normalize-space(Amount) != ''">
                  <xsl:text>Amount </xsl:text><b><xsl:value-of select="Amount"/></b><xsl:text>. </xsl:text>
                </xsl:if>
                <xsl:text>Dorvane books it as a sales receipt, for the customer you choose or for none.</xsl:text>
              </div>
            </td>
          </tr>
        </table>
        <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
          <xsl:call-template name="receipt-section">
            <xsl:with-param name="title">Transaction</xsl:with-param>
            <xsl:with-param name="fields" select="*[not(self::Billing or self::Shipping)]"/>
          </xsl:call-template>
          <xsl:call-template name="receipt-section">
            <xsl:with-param name="title">Customer billing information</xsl:with-param>
            <xsl:with-param name="fields" select="Billing/*"/>
          </xsl:call-template>
          <xsl:call-template name="receipt-section">
            <xsl:with-param name="title">Customer shipping information</xsl:with-param>
            <xsl:with-param name="fields" select="Shipping/*"/>
          </xsl:call-template>
        </table>
      </body>
    </html>
  </xsl:template>

  <!-- A heading and the section's lines, label beside value; nothing for an empty section. -->
  <xsl:template name="receipt-section">
    <xsl:param name="title"/>
    <xsl:param name="fields" select="/.."/>
    <xsl:if test="$fields">
      <tr bgcolor="{$accent}">
        <td colspan="2" style="{$head-cell-style}"><xsl:value-of select="$title"/></td>
      </tr>
      <xsl:for-each select="$fields">
        <tr>
          <td width="200" style="{$cell-style}{$label-style}"><xsl:value-of select="local-name()"/></td>
          <td style="{$cell-style}"><xsl:value-of select="."/></td>
        </tr>
      </xsl:for-each>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
